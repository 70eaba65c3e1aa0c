// The layout of answers.
#include "machine/base/info_buffer.h"

#include <gtest/gtest.h>

namespace pikel::simulated {
namespace {

const std::vector<std::string> kTexts = {"one", "", "three"};

DWORD Answer(const InfoBuffer& buffer) {
    return AnswerWith<PRINTER_INFO_2A>(buffer, kTexts,
                                       [](InfoSpace& space, PRINTER_INFO_2A& info, const std::string& text) {
                                           info.pPrinterName = space.TextOrNull(text);
                                           info.pComment = space.Text(text);
                                           info.pDevMode = static_cast<LPDEVMODEA>(space.BytesOrNull("12345"));
                                           info.pLocation = space.MultiTextOrNull({text + "x", "y"});
                                       });
}

TEST(InfoBuffer, TellsTheSizeThatTheAnswerTakes) {
    DWORD needed = 0;
    DWORD count = 7;
    EXPECT_EQ(Answer({nullptr, 0, &needed, &count}), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(count, 7u);  // CheckInfoBuffer clears it
    std::vector<BYTE> bytes(needed, 0xee);
    DWORD again = 0;
    EXPECT_EQ(Answer({bytes.data(), needed - 1, &again, &count}), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(bytes, std::vector<BYTE>(needed, 0xee));
    EXPECT_EQ(Answer({bytes.data(), needed, &again, &count}), 0u);
    EXPECT_EQ(again, needed);
    EXPECT_EQ(count, 3u);
    const auto* infos = reinterpret_cast<const PRINTER_INFO_2A*>(bytes.data());
    EXPECT_STREQ(infos[0].pPrinterName, "one");
    EXPECT_EQ(infos[1].pPrinterName, nullptr);
    EXPECT_STREQ(infos[1].pComment, "");
    EXPECT_STREQ(infos[2].pComment, "three");
    EXPECT_EQ(std::string(infos[2].pLocation, 10), std::string("threex\0y\0\0", 10));
    EXPECT_EQ((reinterpret_cast<const BYTE*>(infos[2].pDevMode) - bytes.data()) % 8, 0);
}

TEST(InfoBuffer, NeedNotBeAligned) {
    DWORD needed = 0;
    DWORD count = 0;
    Answer({nullptr, 0, &needed, &count});
    std::vector<BYTE> bytes(needed + 1);
    EXPECT_EQ(Answer({bytes.data() + 1, needed, &needed, &count}), 0u);
    PRINTER_INFO_2A info;
    std::memcpy(&info, bytes.data() + 1, sizeof info);
    EXPECT_STREQ(info.pPrinterName, "one");
}

TEST(InfoBuffer, CheckClearsBothCountsAlsoOfACallThatIsRefused) {
    for (const DWORD size : {0u, 4u}) {
        DWORD needed = 9;
        DWORD count = 9;
        EXPECT_EQ(CheckInfoBuffer({nullptr, size, &needed, &count}, true) == 0u, size == 0);
        EXPECT_EQ(needed, 0u);
        EXPECT_EQ(count, 0u);
    }
}

TEST(InfoBuffer, NothingToTellIsASuccess) {
    DWORD needed = 9;
    DWORD count = 9;
    const InfoBuffer buffer{nullptr, 0, &needed, &count};
    EXPECT_EQ(CheckInfoBuffer(buffer, true), 0u);
    EXPECT_EQ(AnswerWith<PORT_INFO_1A>(buffer, std::vector<std::string>(),
                                       [](InfoSpace&, PORT_INFO_1A&, const std::string&) {}),
              0u);
    EXPECT_EQ(needed, 0u);
    EXPECT_EQ(count, 0u);
}

}  // namespace
}  // namespace pikel::simulated

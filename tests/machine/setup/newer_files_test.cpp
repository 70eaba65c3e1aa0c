// Copies that go by the versions of source and target.
#include <string>

#include "machine/setup/file_copy.h"
#include "support/pe_file.h"
#include "support/queue_test.h"

namespace pikel {
namespace {

using ::testing::Contains;
using ::testing::Not;
using ::testing::StartsWith;
using testing_support::kToTarget;
using testing_support::MakePeFile;
using testing_support::PeVersion;
using testing_support::QueueTest;
using testing_support::ReadFileOn;
using testing_support::WriteFileOn;

constexpr UINT kTargetNewer = 0x40000;

class NewerFiles : public QueueTest {
  protected:
    static std::string FileOf(std::uint32_t high, std::uint32_t low, const std::string& name) {
        PeVersion version;
        version.fixed = {high, low};
        version.texts = {{"InternalName", name}};
        return MakePeFile(version);
    }
    /// True when a file of version 1.1 at the target is replaced by one of this version.
    bool IsReplacedBy(std::uint32_t high, std::uint32_t low, DWORD style) {
        const std::string source = FileOf(high, low, "new");
        WriteFileOn(Machine(), "C:\\source\\a.txt", source);
        WriteFileOn(Machine(), "C:\\target\\a.txt", FileOf(1, 1, "old"));
        OpenInf(std::string("[I]\r\nCopyFiles=@a.txt\r\n") + kToTarget);
        EXPECT_TRUE(Run(style));
        return ReadFileOn(Machine(), "C:\\target\\a.txt") == source;
    }
};

TEST_F(NewerFiles, OfTheSameVersionAreKeptBackByNewerOnlyAlone) {
    Answer(kTargetNewer, 0);
    for (const auto& [style, replaced] : {std::pair<DWORD, bool>(0, true),
                                          {SP_COPY_NEWER, true},
                                          {SP_COPY_FORCE_NEWER, true},
                                          {simulated::kCopyNewerOnly, false},
                                          {simulated::kCopyNewerOnly | SP_COPY_FORCE_NEWER, false}}) {
        EXPECT_EQ(IsReplacedBy(1, 1, style), replaced) << style;
    }
}

TEST_F(NewerFiles, AreThoseOfAHigherVersionByTheHighHalfFirst) {
    Answer(kTargetNewer, 0);
    for (const DWORD style : {DWORD{SP_COPY_NEWER}, DWORD{SP_COPY_FORCE_NEWER}, simulated::kCopyNewerOnly}) {
        EXPECT_TRUE(IsReplacedBy(1, 2, style)) << style;
        EXPECT_TRUE(IsReplacedBy(2, 0, style)) << style;
        EXPECT_FALSE(IsReplacedBy(1, 0, style)) << style;
        EXPECT_FALSE(IsReplacedBy(0, 9, style)) << style;
        EXPECT_TRUE(IsReplacedBy(0x80000000, 0, style)) << style;
    }
    EXPECT_TRUE(IsReplacedBy(0, 9, 0)) << "without a flag versions don't count";
}

TEST_F(NewerFiles, AreAskedForUnlessTheyAreForced) {
    EXPECT_TRUE(IsReplacedBy(1, 0, SP_COPY_NEWER)) << "the callback has it replaced";
    EXPECT_THAT(Steps(), Contains(StartsWith("targetnewer ")));
    EXPECT_TRUE(IsReplacedBy(1, 1, simulated::kCopyNewerOnly));
    EXPECT_THAT(Steps(), Contains(StartsWith("targetnewer ")));
    EXPECT_FALSE(IsReplacedBy(1, 0, SP_COPY_FORCE_NEWER));
    EXPECT_THAT(Steps(), Not(Contains(StartsWith("targetnewer "))));
    EXPECT_TRUE(IsReplacedBy(1, 1, SP_COPY_NEWER));
    EXPECT_THAT(Steps(), Not(Contains(StartsWith("targetnewer "))));
}

}  // namespace
}  // namespace pikel

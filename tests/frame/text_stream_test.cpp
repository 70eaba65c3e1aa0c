// A file read as a Windows text stream.
#include "frame/text_stream.h"

#include <string>
#include <vector>

#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

constexpr char kPath[] = "C:\\text.txt";

class TextStreamTest : public MachineTest {
  protected:
    std::vector<std::string> Pieces(std::string_view text, std::size_t max) {
        WriteFileOn(Machine(), kPath, text);
        TextStream stream;
        EXPECT_TRUE(stream.Open(kPath));
        std::vector<std::string> pieces;
        for (std::string piece; stream.ReadPiece(piece, max);) {
            pieces.push_back(piece + (stream.AtEnd() ? "$" : ""));
        }
        EXPECT_TRUE(stream.AtEnd());
        return pieces;
    }
};

TEST_F(TextStreamTest, GivesLinesWithTheirEnds) {
    EXPECT_THAT(Pieces("a\r\nb\nc", 9), ElementsAre("a\n", "b\n", "c$"));
    EXPECT_THAT(Pieces("a\r\r\nb\r", 9), ElementsAre("a\r\n", "b\r$"));
    EXPECT_THAT(Pieces("abc\r\nd\r\n", 2), ElementsAre("ab", "c\n", "d\n"));
    EXPECT_THAT(Pieces("ab\r\ncd", 2), ElementsAre("ab", "\n", "cd"));
    EXPECT_THAT(Pieces("a\x1a"
                       "b\n",
                       9),
                ElementsAre("a$"));
    EXPECT_TRUE(Pieces("", 9).empty());
    EXPECT_TRUE(Pieces("\x1a"
                       "a",
                       9)
                    .empty());
}

TEST_F(TextStreamTest, FindsALineEndAcrossTwoReads) {
    for (std::size_t length : {4094u, 4095u, 4096u, 4097u}) {
        const std::string line(length, 'x');
        EXPECT_THAT(Pieces(line + "\r\ny\r\n", 9000), ElementsAre(line + "\n", "y\n")) << length;
        EXPECT_THAT(Pieces(line + "\ry", 9000), ElementsAre(line + "\ry$")) << length;
        EXPECT_THAT(Pieces(line + "\r", 9000), ElementsAre(line + "\r$")) << length;
    }
}

}  // namespace
}  // namespace pikel

// Compressed files of the machine.
#include "support/compressed_file.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace testing_support;

class CompressedFile : public MachineTest {
  protected:
    struct Info {
        DWORD code = 0;
        std::string name;
        DWORD sourceSize = 0;
        DWORD targetSize = 0;
        UINT type = 99;
    };
    static Info Ask(const char* path) {
        Info info;
        LPSTR name = nullptr;
        info.code =
            Platform().SetupGetFileCompressionInfoA(path, &name, &info.sourceSize, &info.targetSize, &info.type);
        const LocalBlock block(name);
        info.name = name == nullptr ? "" : name;
        return info;
    }
};

TEST_F(CompressedFile, IsToldBySizeTypeAndName) {
    WriteFileOn(Machine(), "C:\\plain.txt", "hello");
    WriteFileOn(Machine(), "C:\\old.dl_", MakeSzdd("hello, hello"));
    WriteFileOn(Machine(), "C:\\new.dl_", MakeCabinet({{"new.dll", std::string(3000, 'n')}}));
    WriteFileOn(Machine(), "C:\\short.c_", MakeSzdd("c"));
    WriteFileOn(Machine(), "C:\\none._", MakeSzdd("none"));
    EXPECT_EQ(Ask("C:\\plain.txt").targetSize, 5u);
    EXPECT_EQ(Ask("C:\\plain.txt").type, UINT{FILE_COMPRESSION_NONE});
    const Info old = Ask("C:\\old.dll");
    EXPECT_EQ(old.code, 0u);
    EXPECT_EQ(old.name, "C:\\old.dl_");
    EXPECT_EQ(old.targetSize, 12u);
    EXPECT_EQ(old.type, UINT{FILE_COMPRESSION_WINLZA});
    const Info cabinet = Ask("C:\\new.dll");
    EXPECT_EQ(cabinet.targetSize, 3000u);
    EXPECT_LT(cabinet.sourceSize, 3000u);
    EXPECT_EQ(cabinet.type, UINT{FILE_COMPRESSION_NTCAB});
    EXPECT_EQ(Ask("C:\\short.c").code, 0u);
    EXPECT_EQ(Ask("C:\\none").code, 0u);
    EXPECT_EQ(Ask("C:\\missing.dll").code, DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(CompressedFile, IsExpandedOrCopied) {
    WriteFileOn(Machine(), "C:\\plain.txt", "hello");
    WriteFileOn(Machine(), "C:\\old.dl_", MakeSzdd("hello, hello"));
    WriteFileOn(Machine(), "C:\\new.dl_", MakeCabinet({{"new.dll", std::string(3000, 'n')}}));
    const std::pair<const char*, std::string> cases[] = {
        {"C:\\plain.txt", "hello"}, {"C:\\old.dll", "hello, hello"}, {"C:\\new.dll", std::string(3000, 'n')}};
    for (const auto& [path, bytes] : cases) {
        EXPECT_EQ(Platform().SetupDecompressOrCopyFileA(path, "C:\\out", nullptr), 0u) << path;
        EXPECT_EQ(ReadFileOn(Machine(), "C:\\out"), bytes);
        UINT type = Ask(path).type;
        EXPECT_EQ(Platform().SetupDecompressOrCopyFileA(path, "C:\\out2", &type), 0u) << path;
        EXPECT_EQ(ReadFileOn(Machine(), "C:\\out2"), bytes);
    }
    EXPECT_EQ(Platform().SetupDecompressOrCopyFileA("C:\\missing", "C:\\out", nullptr), DWORD{ERROR_FILE_NOT_FOUND});
    Machine().Files().SetFreeSpace(100);
    EXPECT_EQ(Platform().SetupDecompressOrCopyFileA("C:\\new.dll", "C:\\out3", nullptr), DWORD{ERROR_DISK_FULL});
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_DISK_FULL});
    EXPECT_FALSE(Machine().Files().Exists("C:\\out3"));
}

TEST_F(CompressedFile, ThatIsDamagedIsRefused) {
    const std::string szdd = MakeSzdd("hello, hello");
    for (std::size_t size = 8; size < szdd.size(); ++size) {
        WriteFileOn(Machine(), "C:\\a.dl_", szdd.substr(0, size));
        EXPECT_NE(Platform().SetupDecompressOrCopyFileA("C:\\a.dll", "C:\\out", nullptr), 0u) << size;
        EXPECT_FALSE(Machine().Files().Exists("C:\\out"));
    }
    for (std::size_t at = 8; at < szdd.size(); ++at) {
        std::string damaged = szdd;
        damaged[at] = static_cast<char>(~damaged[at]);
        WriteFileOn(Machine(), "C:\\a.dl_", damaged);
        Platform().SetupDecompressOrCopyFileA("C:\\a.dll", "C:\\out", nullptr);
    }
}

TEST_F(CompressedFile, OfAMediumIsExpandedWhereItIsInstalled) {
    WriteFileOn(Machine(), "C:\\new\\a.dl_", MakeCabinet({{"a.dll", std::string(3000, 'n')}}));
    WriteFileOn(Machine(), "C:\\new\\b.dl_", "no cabinet");
    WriteFileOn(Machine(), "C:\\old.dll", "old");
    const auto install = [](const char* source, const char* target) {
        BOOL wasInUse = FALSE;
        return Platform().SetupInstallFileExA(nullptr, nullptr, source, "C:\\new", target, SP_COPY_SOURCEPATH_ABSOLUTE,
                                              nullptr, nullptr, &wasInUse)
                   ? DWORD{0}
                   : Platform().GetLastError();
    };
    EXPECT_EQ(install("a.dll", "C:\\old.dll"), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\old.dll"), std::string(3000, 'n'));
    EXPECT_EQ(install("b.dll", "C:\\old.dll"), DWORD{ERROR_INVALID_DATA});
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\old.dll"), std::string(3000, 'n'));
    EXPECT_EQ(install("c.dll", "C:\\old.dll"), DWORD{ERROR_FILE_NOT_FOUND});
}

}  // namespace
}  // namespace pikel

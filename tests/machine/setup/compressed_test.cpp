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

// ---- the walk through a cabinet -------------------------------------------------------------------------------------

/// What a walk told its program, and the code with which the program answers one notification.
struct Told {
    UINT refused = 0;
    UINT code = 0;
    std::vector<std::string> lines{};
};

class CabinetWalk : public MachineTest {
  protected:
    static UINT CALLBACK Tell(PVOID context, UINT notification, UINT_PTR first, UINT_PTR second) {
        Told& told = *static_cast<Told*>(context);
        if (notification == SPFILENOTIFY_CABINETINFO) {
            const auto& info = *reinterpret_cast<const CABINET_INFO_A*>(first);
            told.lines.push_back("cabinet " + std::string(info.CabinetFile) + " in " + info.CabinetPath);
        } else if (notification == SPFILENOTIFY_FILEINCABINET) {
            auto& info = *reinterpret_cast<FILE_IN_CABINET_INFO_A*>(first);
            const std::string name = info.NameInCabinet;
            told.lines.push_back("file " + name + " in " + reinterpret_cast<LPCSTR>(second));
            ("C:\\media\\" + name).copy(info.FullTargetName, sizeof info.FullTargetName - 1);
            return name == "skipped.txt" ? FILEOP_SKIP : FILEOP_DOIT;
        } else if (notification == SPFILENOTIFY_FILEEXTRACTED) {
            const auto& paths = *reinterpret_cast<const FILEPATHS_A*>(first);
            told.lines.push_back("written " + std::string(paths.Target) + " from " + paths.Source);
        }
        return notification == told.refused ? told.code : 0;
    }
    /// Walks through a cabinet of three files; 0 or a code.
    DWORD Run(Told& told) {
        WriteFileOn(Machine(), "C:\\media\\a.cab",
                    MakeCabinet({{"one.txt", "first"}, {"skipped.txt", "second"}, {"two.txt", "third"}}));
        return Platform().SetupIterateCabinetA("C:\\media\\a.cab", 0, Tell, &told) ? 0 : Platform().GetLastError();
    }
};

TEST_F(CabinetWalk, TellsOfTheCabinetOnceAndOfEachFileThatIsWritten) {
    Told told;
    EXPECT_EQ(Run(told), 0u);
    EXPECT_THAT(told.lines,
                ::testing::ElementsAre("cabinet a.cab in C:\\media\\", "file one.txt in C:\\media\\a.cab",
                                       "written C:\\media\\one.txt from C:\\media\\a.cab",
                                       "file skipped.txt in C:\\media\\a.cab", "file two.txt in C:\\media\\a.cab",
                                       "written C:\\media\\two.txt from C:\\media\\a.cab"));
    EXPECT_FALSE(Machine().Files().Exists("C:\\media\\skipped.txt"));
}

TEST_F(CabinetWalk, EndsWithTheCodeThatItIsAnswered) {
    for (const auto& [notification, lines] :
         {std::pair{SPFILENOTIFY_CABINETINFO, 1u}, {SPFILENOTIFY_FILEEXTRACTED, 3u}}) {
        Told told = {.refused = notification, .code = 4711};
        EXPECT_EQ(Run(told), 4711u) << notification;
        EXPECT_EQ(told.lines.size(), lines) << notification;
        EXPECT_EQ(Machine().Files().Exists("C:\\media\\one.txt"), notification == SPFILENOTIFY_FILEEXTRACTED);
    }
}

}  // namespace
}  // namespace pikel

// The contract of the Setup API operations: INF reading, file queues, install sections.
#include <cstring>

#include "platform/contract.h"
#include "platform/inf_cases.h"

namespace pikel {
namespace {

using namespace std::string_literals;
using contract::InfErrorCase;
using contract::InfHeaderCase;
using contract::InfLineCase;
using contract::WineException;

constexpr WineException kWine[] = {
    {"a file without [Version] opens",
     "Wine refuses it with 0xE0000100, as Windows does; the machine opens it so that "
     "what is done with such files can be tried"},
    {"a file with another signature opens", "as above"},
    {"an INF of another class is refused", "Wine doesn't compare the class"},
    {"an open quote leaves the carriage return out", "it becomes a part of the field there"},
    {"UTF-16 with the high byte in front is read", "it is taken for text of the code page"},
    {"a closed INF is refused", "the context is followed to freed memory", true},
    {"a context of zeros is refused", "the null pointer in it is followed", true},
    {"a string may come from the English section", "only [Strings] is read"},
    {"queueing a missing section fails", "it succeeds and queues nothing"},
    {"printing's ids can be set", "the call succeeds, and the running system's folders stay"},
    {"discs of the processor come first", "sections with a processor's name are not looked at"},
    {"an INF tells where a single file lies", "the call fails with 0xE0000102"},
    {"a missing first source is told as an error", "the media are asked for until the callback gives up"},
    {"a target in use waits for the next start", "the call fails with 32"},
    {"a list that isn't there can be appended to", "nothing is written"},
};

::testing::AssertionResult Holds(std::string_view statement, bool holds) {
    return contract::Contract(kWine, statement, holds);
}

constexpr char kHeader[] = "[Version]\nSignature=\"$CHICAGO$\"\n";

class InfContract : public contract::Test {
  protected:
    InfContract() : m_folder(contract::TemporaryFolder() + "pikelinf") {
        Platform().CreateDirectoryA(m_folder.c_str(), nullptr);
    }
    ~InfContract() override {
        m_inf.Reset();
        for (const std::string& file : m_files) {
            Platform().SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_NORMAL);
            Platform().DeleteFileA(file.c_str());
        }
        for (const std::string& folder : m_folders) {
            Platform().RemoveDirectoryA(folder.c_str());
        }
        Platform().RemoveDirectoryA(m_folder.c_str());
    }

    std::string Path(const std::string& name) const { return m_folder + "\\" + name; }
    void MakeFolder(const std::string& name) {
        Platform().CreateDirectoryA(Path(name).c_str(), nullptr);
        m_folders.insert(m_folders.begin(), Path(name));
    }
    /// A file that goes with the test.
    void WriteFile(const std::string& name, std::string_view bytes) {
        contract::WriteFile(Path(name), bytes);
        m_files.push_back(Path(name));
    }
    /// Bytes of a file; "none" when it is missing.
    std::string ReadFile(const std::string& name) {
        m_files.push_back(Path(name));
        OFSTRUCT record{};
        ReadFileHandle file(Platform().OpenFile(Path(name).c_str(), &record, OF_READ));
        if (!file) {
            return "none";
        }
        char buffer[1000];
        const UINT length = Platform()._lread(file.Get(), buffer, sizeof buffer);
        return std::string(buffer, length);
    }

    /// Opens an INF of this text. @return 0 or the code
    DWORD OpenText(std::string_view text, const char* className = nullptr) {
        m_inf.Reset();
        WriteFile("test.inf", text);
        m_line = 0xdead;
        Platform().SetLastError(0);
        m_inf.Reset(Platform().SetupOpenInfFileA(Path("test.inf").c_str(), className, INF_STYLE_WIN4, &m_line));
        return m_inf ? 0 : Platform().GetLastError();
    }
    DWORD Open(std::string_view rest) { return OpenText(kHeader + std::string(rest)); }

    static std::string Field(INFCONTEXT& context, DWORD index) {
        DWORD size = 0;
        if (!Platform().SetupGetStringFieldA(&context, index, nullptr, 0, &size)) {
            EXPECT_EQ(Platform().GetLastError(), 0u);
            return "-";
        }
        std::string text(size, '#');
        EXPECT_TRUE(Platform().SetupGetStringFieldA(&context, index, text.data(), size, &size));
        EXPECT_EQ(text.find('\0'), text.size() - 1);
        text.pop_back();
        return text;
    }
    static std::string LineText(INFCONTEXT& context) {
        char text[2000] = "";
        EXPECT_TRUE(Platform().SetupGetLineTextA(&context, nullptr, nullptr, nullptr, text, sizeof text, nullptr));
        return text;
    }
    /// The section's lines as the cases show them; {"no section"} without lines.
    std::vector<std::string> Lines(const std::string& section) {
        INFCONTEXT context{};
        if (!Platform().SetupFindFirstLineA(m_inf.Get(), section.c_str(), nullptr, &context)) {
            EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_LINE_NOT_FOUND});
            return {"no section"};
        }
        std::vector<std::string> lines;
        do {
            // A field's number of its own for a line without a key: the field past the end is told like a missing key.
            std::string line = Field(context, 0);
            line = line == "-" ? line : "<" + line + ">";
            std::string joined;
            for (DWORD index = 1;; ++index) {
                DWORD size = 0;
                if (!Platform().SetupGetStringFieldA(&context, index, nullptr, 0, &size)) {
                    break;
                }
                const std::string field = Field(context, index);
                line += " [" + field + "]";
                joined += (index == 1 ? "" : ",") + field;
            }
            EXPECT_EQ(LineText(context), joined);
            lines.push_back(line);
        } while (Platform().SetupFindNextLine(&context, &context));
        EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_LINE_NOT_FOUND});
        return lines;
    }
    std::string Text(const char* section, const char* key) {
        char text[2000] = "";
        if (!Platform().SetupGetLineTextA(nullptr, m_inf.Get(), section, key, text, sizeof text, nullptr)) {
            return "code " + std::to_string(Platform().GetLastError());
        }
        return text;
    }

    std::string m_folder;
    std::vector<std::string> m_files;
    std::vector<std::string> m_folders;
    InfHandle m_inf;
    UINT m_line = 0;
};

// ---- reading --------------------------------------------------------------------------------------------------------

TEST_P(InfContract, LinesAreTakenApart) {
    for (const InfLineCase& test : contract::kInfLineCases) {
        SCOPED_TRACE(test.name);
        ASSERT_EQ(Open("[A]\n" + std::string(test.text) + contract::kInfStrings), 0u);
        EXPECT_EQ(Lines("A"), test.lines);
    }
}

TEST_P(InfContract, LinesOfWindowsAreTakenApartAlike) {
    for (const InfLineCase& test : contract::kInfLineCases) {
        if (test.name == "AnOpenQuoteEndsWithTheLine"s || test.name == "ABackslashInQuotesDoesNotContinue"s) {
            continue;  // see below
        }
        SCOPED_TRACE(test.name);
        std::string text;
        for (char character : kHeader + ("[A]\n" + std::string(test.text)) + contract::kInfStrings) {
            text += character == '\n' ? "\r\n" : std::string(1, character);
        }
        ASSERT_EQ(OpenText(text), 0u);
        EXPECT_EQ(Lines("A"), test.lines);
    }
    ASSERT_EQ(Open("[A]\r\nk=\"open\r\n"), 0u);
    EXPECT_TRUE(Holds("an open quote leaves the carriage return out", Text("A", "k") == "open"));
}

TEST_P(InfContract, HeadersNameTheirSections) {
    for (const InfHeaderCase& test : contract::kInfHeaderCases) {
        SCOPED_TRACE(test.name);
        ASSERT_EQ(Open("[First]\nf=1\n" + std::string(test.text)), 0u);
        const std::vector<std::string> none = {"no section"};
        EXPECT_EQ(Lines(test.section), test.lines.empty() ? none : test.lines);
    }
}

TEST_P(InfContract, ErrorsNameTheCodeAndTheLine) {
    for (const InfErrorCase& test : contract::kInfErrorCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(OpenText(test.text), test.code);
        if (test.line != 0) {
            EXPECT_EQ(m_line, test.line);
        }
    }
}

TEST_P(InfContract, SectionsOfOneNameAreOne) {
    ASSERT_EQ(Open("[A]\na=1\n[B]\nb=1\n[a]\na=2\nc=3\n"), 0u);
    EXPECT_EQ(Lines("A"), (std::vector<std::string>{"<a> [1]", "<a> [2]", "<c> [3]"}));
    EXPECT_EQ(Text("A", "A"), "1");
}

TEST_P(InfContract, TheSignatureDoesNotMatter) {
    EXPECT_TRUE(Holds("a file without [Version] opens", OpenText("[A]\nk=v\n") == 0));
    EXPECT_TRUE(Holds("a file with another signature opens", OpenText("[Version]\nSignature=other\n") == 0));
    EXPECT_EQ(OpenText("[Version]\nSignature=\"$Windows NT$\"\n"), 0u);
    EXPECT_EQ(OpenText("[version]\nsignature=$chicago$\n"), 0u);
    EXPECT_EQ(OpenText(kHeader + "Class=Printer\n"s, "printer"), 0u);
    EXPECT_TRUE(Holds("an INF of another class is refused", OpenText(kHeader + "Class=Printer\n"s, "net") != 0));
}

TEST_P(InfContract, EncodingsAreTold) {
    const std::string text = kHeader + "[A]\nk=v\n"s;
    std::string little = "\xFF\xFE";
    std::string big = "\xFE\xFF";
    std::string bare;
    for (char character : text + "j=\xE9\n") {
        for (std::string* wide : {&little, &bare}) {
            *wide += character;
            *wide += '\0';
        }
        big += '\0';
        big += character;
    }
    for (const std::string& bytes : {little, bare}) {
        ASSERT_EQ(OpenText(bytes), 0u);
        EXPECT_EQ(Text("A", "j"), "\xE9");
    }
    EXPECT_TRUE(Holds("UTF-16 with the high byte in front is read", OpenText(big) == 0 && Text("A", "j") == "\xE9"));
    ASSERT_EQ(OpenText("\xEF\xBB\xBF" + text + "j=\xC3\xA9\n"), 0u);
    EXPECT_EQ(Text("A", "j"), "\xE9");
    ASSERT_EQ(OpenText(text + "j=\xE9\n"), 0u);
    EXPECT_EQ(Text("A", "j"), "\xE9");
    ASSERT_EQ(OpenText(text + "\x1A\nj=1\n"), 0u);
    EXPECT_EQ(Text("A", "k"), "v");
    EXPECT_EQ(Text("A", "j"), "code " + std::to_string(DWORD{ERROR_LINE_NOT_FOUND}));
}

TEST_P(InfContract, WhatIsNoInfIsRefused) {
    auto code = [&](const std::string& path) {
        InfHandle inf(Platform().SetupOpenInfFileA(path.c_str(), nullptr, INF_STYLE_WIN4, nullptr));
        return inf ? DWORD{0} : Platform().GetLastError();
    };
    EXPECT_EQ(code(Path("none.inf")), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(code(Path("none\\none.inf")), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(code(m_folder), DWORD{ERROR_ACCESS_DENIED});
    WriteFile("here.inf", kHeader);
    EXPECT_EQ(code("here.inf"), DWORD{ERROR_FILE_NOT_FOUND}) << "a bare name is looked for in the INF folder";
    EXPECT_EQ(code(Path("here.inf")), 0u);
    FileHandle held(Platform().CreateFileA(Path("here.inf").c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_EQ(code(Path("here.inf")), DWORD{ERROR_SHARING_VIOLATION});
}

TEST_P(InfContract, ABareNameIsLookedForInTheInfFolder) {
    char windows[MAX_PATH] = "";
    ASSERT_NE(Platform().GetWindowsDirectoryA(windows, sizeof windows), 0u);
    const std::string path = std::string(windows) + "\\inf\\pikelnam.inf";
    contract::WriteFile(path, kHeader);
    m_files.push_back(path);
    InfHandle inf(Platform().SetupOpenInfFileA("pikelnam.inf", nullptr, INF_STYLE_WIN4, nullptr));
    EXPECT_TRUE(static_cast<bool>(inf));
}

TEST_P(InfContract, BuffersAndSizes) {
    ASSERT_EQ(Open("[A]\nk=v,w\na,b\n"), 0u);
    INFCONTEXT context{};
    ASSERT_TRUE(Platform().SetupFindFirstLineA(m_inf.Get(), "A", "k", &context));
    char buffer[10] = "####";
    DWORD size = 77;
    EXPECT_TRUE(Platform().SetupGetStringFieldA(&context, 1, nullptr, 0, &size));
    EXPECT_EQ(size, 2u);
    EXPECT_FALSE(Platform().SetupGetStringFieldA(&context, 1, buffer, 1, &size));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_STREQ(buffer, "####");
    EXPECT_TRUE(Platform().SetupGetLineTextA(&context, nullptr, nullptr, nullptr, nullptr, 0, &size));
    EXPECT_EQ(size, 4u);
    EXPECT_FALSE(Platform().SetupGetLineTextA(&context, nullptr, nullptr, nullptr, buffer, 3, &size));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    size = 77;
    Platform().SetLastError(5);
    EXPECT_FALSE(Platform().SetupGetStringFieldA(&context, 3, nullptr, 0, &size));
    EXPECT_EQ(Platform().GetLastError(), 0u);
    EXPECT_FALSE(Platform().SetupGetLineTextA(nullptr, m_inf.Get(), "A", "none", nullptr, 0, &size));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_LINE_NOT_FOUND});
    EXPECT_EQ(size, 77u);
    EXPECT_EQ(Text("A", nullptr), "v,w") << "without a key it is the first line";
    EXPECT_TRUE(Platform().SetupGetLineByIndexA(m_inf.Get(), "A", 1, &context));
    EXPECT_EQ(Field(context, 1), "a");
    EXPECT_EQ(Field(context, 0), "-");
    EXPECT_FALSE(Platform().SetupGetLineByIndexA(m_inf.Get(), "A", 2, &context));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_LINE_NOT_FOUND});
}

TEST_P(InfContract, WhatIsMissingLeavesTheContextAlone) {
    ASSERT_EQ(Open("[A]\nk=v\n[E]\n"), 0u);
    INFCONTEXT context;
    std::memset(static_cast<void*>(&context), 0x55, sizeof context);
    EXPECT_FALSE(Platform().SetupFindFirstLineA(m_inf.Get(), "A", "none", &context));
    EXPECT_FALSE(Platform().SetupFindFirstLineA(m_inf.Get(), "E", nullptr, &context));
    EXPECT_FALSE(Platform().SetupFindFirstLineA(m_inf.Get(), "none", nullptr, &context));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_LINE_NOT_FOUND});
    EXPECT_EQ(context.Line, 0x55555555u);
}

TEST_P(InfContract, StaleContextsAreRefused) {
    ASSERT_EQ(Open("[A]\nk=v\n"), 0u);
    INFCONTEXT context{};
    ASSERT_TRUE(Platform().SetupFindFirstLineA(m_inf.Get(), "A", nullptr, &context));
    if (contract::CanTry(kWine, "a closed INF is refused")) {
        m_inf.Reset();
        EXPECT_FALSE(Platform().SetupFindNextLine(&context, &context));
        EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    }
    if (contract::CanTry(kWine, "a context of zeros is refused")) {
        context = {};
        EXPECT_FALSE(Platform().SetupGetStringFieldA(&context, 1, nullptr, 0, nullptr));
        EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    }
}

TEST_P(InfContract, NumbersBetweenPercentSignsAreFolders) {
    ASSERT_EQ(Open("[A]\nk=%10%\\x\nu=%40000%,%45000%\nl=%only%\n[Strings.0409]\nonly=english\n"), 0u);
    char windows[MAX_PATH] = "";
    ASSERT_NE(Platform().GetWindowsDirectoryA(windows, sizeof windows), 0u);
    EXPECT_EQ(Text("A", "k"), std::string(windows) + "\\x");
    EXPECT_TRUE(Platform().SetupSetDirectoryIdA(m_inf.Get(), 40000, "C:\\mine"));
    EXPECT_EQ(Text("A", "u"), "C:\\mine,%45000%");
    EXPECT_TRUE(Holds("a string may come from the English section", Text("A", "l") == "english"));
}

// ---- queues ---------------------------------------------------------------------------------------------------------

/// Notes what a queue tells, with paths below the test's folder as names, and gives up after some repetitions.
struct Steps {
    std::string folder;
    std::vector<std::string> told;
    UINT onError = FILEOP_ABORT;
    int asked = 0;

    std::string Name(const char* path) const {
        std::string name = path != nullptr ? path : "";
        for (std::size_t doubled = name.find("\\\\"); doubled != std::string::npos; doubled = name.find("\\\\")) {
            name.erase(doubled, 1);
        }
        return name.starts_with(folder) ? name.substr(folder.size()) : name;
    }

    static UINT CALLBACK Note(PVOID context, UINT notification, UINT_PTR first, UINT_PTR second) {
        return static_cast<Steps*>(context)->Take(notification, first, second);
    }
    UINT Take(UINT notification, UINT_PTR first, UINT_PTR second) {
        if (notification == SPFILENOTIFY_NEEDMEDIA) {
            const auto* media = reinterpret_cast<const SOURCE_MEDIA_A*>(first);
            told.push_back("media " + Name(media->SourcePath) + " for " + media->SourceFile);
            return ++asked > 3 ? FILEOP_ABORT : FILEOP_DOIT;
        }
        const bool isFile = notification >= SPFILENOTIFY_STARTDELETE && notification <= SPFILENOTIFY_COPYERROR;
        if (isFile) {
            const auto* paths = reinterpret_cast<const FILEPATHS_A*>(first);
            told.push_back(std::to_string(notification) + " " + Name(paths->Source) + " > " + Name(paths->Target) +
                           (paths->Win32Error != 0 ? " error " + std::to_string(paths->Win32Error) : ""));
        } else if (notification == SPFILENOTIFY_STARTSUBQUEUE) {
            told.push_back("sub-queue " + std::to_string(first) + " of " + std::to_string(second));
        } else {
            told.push_back(std::to_string(notification));
        }
        const bool isError = notification == SPFILENOTIFY_DELETEERROR || notification == SPFILENOTIFY_RENAMEERROR ||
                             notification == SPFILENOTIFY_COPYERROR;
        return isError ? onError : static_cast<UINT>(FILEOP_DOIT);
    }
};

class QueueContract : public InfContract {
  protected:
    QueueContract() {
        MakeFolder("in");
        MakeFolder("in\\sub");
        MakeFolder("out");
        WriteFile("in\\a.txt", "aaa");
        WriteFile("in\\b.txt", "bbbb");
        WriteFile("in\\sub\\c.txt", "ccccc");
        m_steps.folder = m_folder + "\\";
    }

    /// Queues section [I] of an INF of this text, where id 40000 is the folder "out", and commits.
    /// @return 0 or the code
    DWORD Run(const std::string& text, DWORD style = 0) {
        EXPECT_EQ(Open(text), 0u);
        EXPECT_TRUE(Platform().SetupSetDirectoryIdA(m_inf.Get(), 40000, Path("out").c_str()));
        FileQueueHandle queue(Platform().SetupOpenFileQueue());
        EXPECT_TRUE(static_cast<bool>(queue));
        EXPECT_TRUE(Platform().SetupInstallFilesFromInfSectionA(m_inf.Get(), nullptr, queue.Get(), "I",
                                                                Path("in").c_str(), style));
        m_steps.told.clear();
        m_steps.asked = 0;
        Platform().SetLastError(0);
        const BOOL result = Platform().SetupCommitFileQueueA(nullptr, queue.Get(), &Steps::Note, &m_steps);
        return result ? 0 : Platform().GetLastError();
    }
    Steps m_steps;
};

constexpr char kToOut[] = "[DestinationDirs]\nDefaultDestDir=40000\n";

TEST_P(QueueContract, StepsAreToldInTheirOrder) {
    WriteFile("out\\d.txt", "d");
    WriteFile("out\\old.txt", "o");
    EXPECT_EQ(Run("[I]\nCopyFiles=F,None,@b.txt\nDelFiles=D\nRenFiles=R\n[F]\nx.txt,a.txt\n[D]\nd.txt\n"
                  "[R]\nnew.txt,old.txt\n"s +
                  kToOut),
              0u);
    EXPECT_EQ(m_steps.told,
              (std::vector<std::string>{"1", "sub-queue 2 of 1", "5  > out\\d.txt", "6  > out\\d.txt", "4",
                                        "sub-queue 1 of 1", "8 out\\old.txt > out\\new.txt",
                                        "9 out\\old.txt > out\\new.txt", "4", "sub-queue 0 of 2", "media in for a.txt",
                                        "11 in\\a.txt > out\\x.txt", "12 in\\a.txt > out\\x.txt",
                                        "11 in\\b.txt > out\\b.txt", "12 in\\b.txt > out\\b.txt", "4", "2"}));
    EXPECT_EQ(ReadFile("out\\x.txt"), "aaa");
    EXPECT_EQ(ReadFile("out\\b.txt"), "bbbb");
    EXPECT_EQ(ReadFile("out\\new.txt"), "o");
    EXPECT_EQ(ReadFile("out\\d.txt"), "none");
}

TEST_P(QueueContract, AnEmptyQueueTellsNothing) {
    EXPECT_EQ(Run("[I]\nother=1\n"), 0u);
    EXPECT_TRUE(m_steps.told.empty());
}

TEST_P(QueueContract, DiscsTellWhereFilesLie) {
    EXPECT_EQ(Run("[I]\nCopyFiles=F\n[F]\na.txt\nc.txt\n[SourceDisksNames]\n1=one,tag,,\\sub\n2=two\n"
                  "[SourceDisksFiles]\nc.txt=1\na.txt=2\n"s +
                  kToOut),
              0u);
    EXPECT_EQ(ReadFile("out\\a.txt"), "aaa");
    EXPECT_EQ(ReadFile("out\\c.txt"), "ccccc");
    EXPECT_EQ(m_steps.told[2], "media in for a.txt");
    EXPECT_EQ(m_steps.told[5], "media in\\sub for c.txt");
    m_steps.onError = FILEOP_ABORT;
    const DWORD code =
        Run("[I]\nCopyFiles=F\n[F]\ne.txt,c.txt\n[SourceDisksNames]\n1=one,,,none\n"
            "[SourceDisksNames.x86]\n1=one,,,sub\n[SourceDisksNames.amd64]\n1=one,,,sub\n"
            "[SourceDisksFiles]\nc.txt=1\n"s +
            kToOut);
    EXPECT_TRUE(Holds("discs of the processor come first", code == 0));
    ReadFile("out\\e.txt");
}

TEST_P(QueueContract, SubFoldersAreMade) {
    m_folders.insert(m_folders.begin(), Path("out\\my"));
    m_folders.insert(m_folders.begin(), Path("out\\my\\deep"));
    EXPECT_EQ(Run("[I]\nCopyFiles=F\n[F]\na.txt\n[DestinationDirs]\nF=40000,my\\deep\n"), 0u);
    EXPECT_EQ(ReadFile("out\\my\\deep\\a.txt"), "aaa");
    EXPECT_EQ(Run("[I]\nCopyFiles=F\n[F]\na.txt\n[DestinationDirs]\nF=-1," + Path("out") + "\n"), 0u);
    EXPECT_EQ(ReadFile("out\\a.txt"), "aaa");
}

TEST_P(QueueContract, WithoutAKnownFolderFilesGoToTheSystemFolder) {
    char system[MAX_PATH] = "";
    ASSERT_NE(Platform().GetSystemDirectoryA(system, sizeof system), 0u);
    const std::string target = std::string(system) + "\\pikeltst.txt";
    m_files.push_back(target);
    for (const char* folders : {"", "[DestinationDirs]\nF=45000\n"}) {
        EXPECT_EQ(Run("[I]\nCopyFiles=F\n[F]\npikeltst.txt,a.txt\n"s + folders), 0u);
        EXPECT_TRUE(contract::FileExists(target));
        EXPECT_TRUE(Platform().DeleteFileA(target.c_str()));
    }
}

TEST_P(QueueContract, AMissingSourceIsAnErrorOfItsStep) {
    const std::string text = "[I]\nCopyFiles=F\n[F]\na.txt\nnone.txt\nb.txt\n"s + kToOut;
    EXPECT_EQ(Run(text), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(m_steps.told,
              (std::vector<std::string>{"1", "sub-queue 0 of 3", "media in for a.txt", "11 in\\a.txt > out\\a.txt",
                                        "12 in\\a.txt > out\\a.txt", "11 in\\none.txt > out\\none.txt",
                                        "13 in\\none.txt > out\\none.txt error 2", "2"}));
    EXPECT_EQ(ReadFile("out\\none.txt"), "none");
    m_steps.onError = FILEOP_SKIP;
    EXPECT_EQ(Run(text), 0u);
    EXPECT_EQ(ReadFile("out\\a.txt"), "aaa");
    EXPECT_EQ(ReadFile("out\\b.txt"), "bbbb");
    m_steps.onError = FILEOP_ABORT;
    EXPECT_EQ(Run("[I]\nCopyFiles=@none.txt,@a.txt\n"s + kToOut), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_TRUE(Holds("a missing first source is told as an error",
                      m_steps.told.size() > 4 && m_steps.told[4] == "13 in\\none.txt > out\\none.txt error 2"));
}

TEST_P(QueueContract, AHeldTargetIsAnErrorOfItsStep) {
    WriteFile("out\\a.txt", "old");
    {
        FileHandle held(Platform().CreateFileA(Path("out\\a.txt").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_EQ(Run("[I]\nCopyFiles=@a.txt\n"s + kToOut), DWORD{ERROR_SHARING_VIOLATION});
        EXPECT_EQ(m_steps.told[m_steps.told.size() - 2], "13 in\\a.txt > out\\a.txt error 32");
    }
    EXPECT_EQ(ReadFile("out\\a.txt"), "old");
}

TEST_P(QueueContract, FilesWithoutVersionsAreReplacedWhateverTheFlags) {
    for (DWORD style : {DWORD{0}, DWORD{SP_COPY_NEWER}, DWORD{SP_COPY_FORCE_NEWER}}) {
        WriteFile("out\\a.txt", "old");
        EXPECT_EQ(Run("[I]\nCopyFiles=@a.txt\n"s + kToOut, style), 0u);
        EXPECT_EQ(ReadFile("out\\a.txt"), "aaa");
    }
    EXPECT_EQ(Run("[I]\nCopyFiles=@b.txt\n"s + kToOut, SP_COPY_REPLACEONLY), 0u);
    EXPECT_EQ(ReadFile("out\\b.txt"), "none");
}

TEST_P(QueueContract, AReadOnlyTargetIsReplaced) {
    WriteFile("out\\a.txt", "old");
    ASSERT_TRUE(Platform().SetFileAttributesA(Path("out\\a.txt").c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(Run("[I]\nCopyFiles=@a.txt\n"s + kToOut), 0u);
    EXPECT_EQ(ReadFile("out\\a.txt"), "aaa");
}

TEST_P(QueueContract, AMissingSectionIsRefused) {
    ASSERT_EQ(Open("[I]\n"), 0u);
    FileQueueHandle queue(Platform().SetupOpenFileQueue());
    Platform().SetLastError(0);
    const BOOL result =
        Platform().SetupInstallFilesFromInfSectionA(m_inf.Get(), nullptr, queue.Get(), "None", m_folder.c_str(), 0);
    EXPECT_TRUE(
        Holds("queueing a missing section fails", !result && Platform().GetLastError() == DWORD{ERROR_LINE_NOT_FOUND}));
}

TEST_P(QueueContract, OnlyUserIdsCanBeSet) {
    ASSERT_EQ(Open("[I]\n"), 0u);
    for (DWORD id : {1u, 10u, 11u, 23u, 32767u}) {
        EXPECT_FALSE(Platform().SetupSetDirectoryIdA(m_inf.Get(), id, m_folder.c_str()));
        EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    }
    for (DWORD id : {32768u, 40000u, 66000u}) {
        EXPECT_TRUE(Platform().SetupSetDirectoryIdA(m_inf.Get(), id, m_folder.c_str()));
    }
    EXPECT_TRUE(Platform().SetupSetDirectoryIdA(m_inf.Get(), 0, nullptr));
    ASSERT_EQ(Open("[A]\nk=%66000%\n"), 0u);
    EXPECT_TRUE(Platform().SetupSetDirectoryIdA(m_inf.Get(), 66000, m_folder.c_str()));
    EXPECT_TRUE(Holds("printing's ids can be set", Text("A", "k") == m_folder));
}

TEST_P(QueueContract, TheSystemsCallbackAnswers) {
    QueueCallbackContext context(Platform().SetupInitDefaultQueueCallbackEx(nullptr, nullptr, 0, 0, nullptr));
    ASSERT_TRUE(static_cast<bool>(context));
    FILEPATHS_A paths = {"C:\\t", "C:\\s", 0, 0};
    auto ask = [&](UINT notification) {
        return Platform().SetupDefaultQueueCallbackA(context.Get(), notification, reinterpret_cast<UINT_PTR>(&paths),
                                                     0);
    };
    EXPECT_EQ(ask(SPFILENOTIFY_STARTQUEUE), UINT{TRUE});
    EXPECT_EQ(ask(SPFILENOTIFY_STARTSUBQUEUE), UINT{TRUE});
    EXPECT_EQ(ask(SPFILENOTIFY_STARTCOPY), UINT{FILEOP_DOIT});
    EXPECT_EQ(ask(SPFILENOTIFY_STARTDELETE), UINT{FILEOP_DOIT});
    EXPECT_EQ(ask(SPFILENOTIFY_STARTRENAME), UINT{FILEOP_DOIT});
}

// ---- single files ---------------------------------------------------------------------------------------------------

TEST_P(QueueContract, SingleFilesAreInstalled) {
    auto install = [&](HINF inf, const char* source, const char* target, DWORD style) {
        BOOL inUse = FALSE;
        Platform().SetLastError(99);
        const BOOL result = Platform().SetupInstallFileExA(inf, nullptr, source, Path("in").c_str(),
                                                           Path(target).c_str(), style, nullptr, nullptr, &inUse);
        return result ? "done" : "code " + std::to_string(Platform().GetLastError());
    };
    EXPECT_EQ(install(nullptr, "a.txt", "out\\o.txt", 0), "done");
    EXPECT_EQ(ReadFile("out\\o.txt"), "aaa");
    EXPECT_EQ(install(nullptr, "b.txt", "out\\o.txt", SP_COPY_NEWER), "done");
    EXPECT_EQ(ReadFile("out\\o.txt"), "bbbb");
    EXPECT_EQ(install(nullptr, "a.txt", "out\\o.txt", SP_COPY_FORCE_NOOVERWRITE), "code 0");
    EXPECT_EQ(install(nullptr, "a.txt", "out\\n.txt", SP_COPY_REPLACEONLY), "code 0");
    EXPECT_EQ(install(nullptr, "none.txt", "out\\o.txt", 0), "code 2");
    EXPECT_EQ(install(nullptr, "a.txt", "none\\x\\o.txt", 0), "code 3");
    EXPECT_EQ(ReadFile("out\\o.txt"), "bbbb");
    ASSERT_EQ(Open("[SourceDisksNames]\n1=d,,,sub\n[SourceDisksFiles]\nc.txt=1\n"), 0u);
    EXPECT_TRUE(
        Holds("an INF tells where a single file lies", install(m_inf.Get(), "c.txt", "out\\c.txt", 0) == "done"));
    ReadFile("out\\c.txt");
    FileHandle held(Platform().CreateFileA(Path("out\\o.txt").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_EQ(install(nullptr, "a.txt", "out\\o.txt", 0), "code 32");
    EXPECT_TRUE(
        Holds("a target in use waits for the next start",
              install(nullptr, "a.txt", "out\\o.txt", SP_COPY_FORCE_IN_USE | SP_COPY_SOURCEPATH_ABSOLUTE) == "done"));
    ReadFile("out\\SET1.tmp");
}

// ---- registry entries -----------------------------------------------------------------------------------------------

class RegistryContract : public InfContract {
  protected:
    RegistryContract() { EXPECT_EQ(Apply("", "HKCU,Software\\PikelTest\n"), 0u); }
    ~RegistryContract() override { EXPECT_EQ(Apply("", "HKCU,Software\\PikelTest\n"), 0u); }

    DWORD Apply(const std::string& add, const std::string& remove = "", HKEY relative = nullptr) {
        EXPECT_EQ(Open("[I]\nAddReg=R,None\nDelReg=D\n[R]\n" + add + "[D]\n" + remove), 0u);
        Platform().SetLastError(0);
        const BOOL result = Platform().SetupInstallFromInfSectionA(nullptr, m_inf.Get(), "I", SPINST_REGISTRY, relative,
                                                                   nullptr, 0, nullptr, nullptr, nullptr, nullptr);
        return result ? 0 : Platform().GetLastError();
    }
    /// "type:bytes", or "none".
    static std::string Value(const char* name, const std::string& subKey = "") {
        HKEY key = nullptr;
        if (Platform().RegOpenKeyExA(HKEY_CURRENT_USER, ("Software\\PikelTest" + subKey).c_str(), 0, KEY_READ, &key) !=
            0) {
            return "no key";
        }
        RegistryKey open(key);
        DWORD type = 0;
        char data[200];
        DWORD size = sizeof data;
        const LSTATUS code =
            Platform().RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<LPBYTE>(data), &size);
        return code != 0 ? "none" : std::to_string(type) + ":" + std::string(data, size);
    }
};

TEST_P(RegistryContract, ValuesHaveTheTypeOfTheirFlags) {
    const std::pair<const char*, std::string> cases[] = {
        {",,text", "1:text\0"s},
        {",0,\"te,xt\",more", "1:te,xt\0"s},
        {",0", "1:\0"s},
        {",0x20000,%%windir%%\\x", "2:%windir%\\x\0"s},
        {",0x10001,5", "4:\x05\0\0\0"s},
        {",0x10001,0x1f", "4:\x1F\0\0\0"s},
        {",0x10001,-1", "4:\xFF\xFF\xFF\xFF"s},
        {",0x10001,zz", "4:\0\0\0\0"s},
        {",0x10001,1,2,3,4", "4:\x01\x02\x03\x04"s},
        {",1,01,2,ff,A0", "3:\x01\x02\xFF\xA0"s},
        {",1", "3:"s},
        {",0x20001,1,2", "0:\x01\x02"s},
        {",0x50001,1,2", "5:\x01\x02"s},
        {",0xb0001,1,2,3,4,5,6,7,8", "11:\x01\x02\x03\x04\x05\x06\x07\x08"s},
        {",0x10000,a,b,c", "7:a\0b\0c\0\0"s},
        {",0x10000", "7:\0"s},
        {",0x10000,a,,b", "7:a\0\0"s},
    };
    for (const auto& [line, value] : cases) {
        SCOPED_TRACE(line);
        EXPECT_EQ(Apply("HKCU,Software\\PikelTest,v" + std::string(line) + "\n", "HKCU,Software\\PikelTest,v\n"), 0u);
        EXPECT_EQ(Value("v"), value);
    }
}

TEST_P(RegistryContract, FlagsDecideAboutWhatIsThere) {
    const std::string key = "HKCU,Software\\PikelTest";
    EXPECT_EQ(Apply(key + ",old,,old\n" + key + ",list,0x10000,a,b\n" + key + ",gone,,x\n"), 0u);
    EXPECT_EQ(Apply(key + ",old,2,new\n" + key + ",fresh,2,new\n" + key + ",missing,0x20,x\n" + key +
                    "\\only,v,0x10,x\n" + key + ",list,0x10008,d,A\n" + key + ",gone,4\n" + key + ",new,0x10008,e\n"),
              0u);
    EXPECT_EQ(Value("old"), "1:old\0"s);
    EXPECT_EQ(Value("fresh"), "1:new\0"s);
    EXPECT_EQ(Value("missing"), "none");
    EXPECT_EQ(Value("v", "\\only"), "none");
    EXPECT_EQ(Value("list"), "7:a\0b\0d\0\0"s);
    EXPECT_EQ(Value("gone"), "none");
    EXPECT_TRUE(Holds("a list that isn't there can be appended to", Value("new") == "7:e\0\0"s));
}

TEST_P(RegistryContract, DeletesComeFirst) {
    const std::string key = "HKCU,Software\\PikelTest";
    EXPECT_EQ(Apply(key + ",v,,old\n" + key + "\\a\\b,v,,1\n" + key + "\\c,v,,1\n"), 0u);
    EXPECT_EQ(Apply(key + ",v,2,new\n", key + ",v\n" + key + "\\a\n" + key + "\\none\n" + key + ",none\n"), 0u);
    EXPECT_EQ(Value("v"), "1:new\0"s);
    EXPECT_EQ(Value("v", "\\a\\b"), "no key");
    EXPECT_EQ(Value("v", "\\a"), "no key");
    EXPECT_EQ(Value("v", "\\c"), "1:1\0"s);
}

TEST_P(RegistryContract, UnknownRootsArePassedOverAndHkrNeedsAKey) {
    EXPECT_EQ(Apply("XXX,Software\\PikelTest,x,,1\nHKEY_CURRENT_USER,Software\\PikelTest,y,,1\nHKR,,z,,1\n"
                    "hkcu,Software\\PikelTest,,,own\n"),
              0u);
    EXPECT_EQ(Value(""), "1:own\0"s);
    EXPECT_EQ(Value("x"), "none");
    EXPECT_EQ(Value("y"), "none");
    HKEY key = nullptr;
    ASSERT_EQ(Platform().RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\PikelTest", 0, KEY_ALL_ACCESS, &key), 0);
    RegistryKey relative(key);
    EXPECT_EQ(Apply("HKR,,z,,1\nHKR,sub\\deep,z,,2\n", "", key), 0u);
    EXPECT_EQ(Value("z"), "1:1\0"s);
    EXPECT_EQ(Value("z", "\\sub\\deep"), "1:2\0"s);
}

INSTANTIATE_CONTRACT(InfContract, "xp", "xp-x64", "win98");
INSTANTIATE_CONTRACT(QueueContract, "xp", "xp-x64", "win98");
INSTANTIATE_CONTRACT(RegistryContract, "xp", "win98");

}  // namespace
}  // namespace pikel

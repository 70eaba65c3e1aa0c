// Both kinds of disk give the same answers.
#include "machine/files/disk.h"

#include <stdlib.h>

#include <filesystem>

#include "machine/files/host_disk.h"
#include "machine/files/memory_disk.h"
#include "support/machine_test.h"

namespace pikel::simulated {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class HostFolder {
  public:
    HostFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "pikel-disk-XXXXXX").string();
        m_root = mkdtemp(pattern.data());
    }
    ~HostFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_root, ignored);
    }
    Disk& TheDisk() { return m_disk; }
    const std::string& Root() const { return m_root; }

  private:
    HostDisk m_disk;
    std::string m_root;
};

class MemoryFolder {
  public:
    Disk& TheDisk() { return *m_disk; }
    const std::string& Root() const { return m_root; }

  private:
    std::shared_ptr<MemoryDisk> m_disk = std::make_shared<MemoryDisk>();
    std::string m_root;
};

std::uint64_t Ticks(const FILETIME& time) {
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

template <class Folder>
class DiskTest : public ::testing::Test {
  protected:
    Disk& TheDisk() { return m_folder.TheDisk(); }
    std::string At(const std::string& below) { return m_folder.Root() + "/" + below; }
    void Put(const std::string& below, std::string_view bytes) {
        ASSERT_EQ(TheDisk().Replace(At(below), bytes, nullptr), 0u) << below;
    }
    void PutFolder(const std::string& below) { ASSERT_EQ(TheDisk().MakeFolder(At(below)), 0u) << below; }
    std::string Read(const std::string& below) {
        std::string bytes;
        const DWORD code = TheDisk().ReadWhole(At(below), &bytes);
        return code == 0 ? bytes : "code " + std::to_string(code);
    }
    DiskEntry Look(const std::string& below) {
        DiskEntry entry;
        EXPECT_EQ(TheDisk().Look(At(below), &entry), 0u) << below;
        return entry;
    }
    DWORD CodeOf(const std::string& below) { return TheDisk().Look(At(below), nullptr); }
    std::unique_ptr<DiskFile> Open(const std::string& below, DiskOpening how) {
        std::unique_ptr<DiskFile> file;
        EXPECT_EQ(TheDisk().Open(At(below), how, false, &file), 0u) << below;
        return file;
    }
    DWORD CodeOfOpening(const std::string& below, DiskOpening how) {
        std::unique_ptr<DiskFile> file;
        const DWORD code = TheDisk().Open(At(below), how, false, &file);
        EXPECT_EQ(file != nullptr, code == 0) << below;
        return code;
    }

  private:
    Folder m_folder;
};

using Kinds = ::testing::Types<HostFolder, MemoryFolder>;
struct KindName {
    template <class Folder>
    static std::string GetName(int) {
        return std::is_same_v<Folder, HostFolder> ? "Host" : "Memory";
    }
};
TYPED_TEST_SUITE(DiskTest, Kinds, KindName);

TYPED_TEST(DiskTest, TellsWhatIsMissing) {
    this->PutFolder("folder");
    this->Put("file", "bytes");
    EXPECT_EQ(this->CodeOf("folder"), 0u);
    EXPECT_EQ(this->CodeOf("none"), 2u);
    EXPECT_EQ(this->CodeOf("none/below"), 2u);
    EXPECT_EQ(this->CodeOf("file/below"), 3u);
    EXPECT_EQ(this->CodeOf("file/below/further"), 3u);
    EXPECT_EQ(this->CodeOf("Folder"), 2u) << "names match to the letter";
    EXPECT_EQ(this->Read("none"), "code 2");
    EXPECT_EQ(this->Read("folder"), "code 5");
}

TYPED_TEST(DiskTest, TellsKindSizeAndAttributes) {
    this->PutFolder("folder");
    this->Put("file", "bytes");
    EXPECT_TRUE(this->Look("folder").isFolder);
    EXPECT_EQ(this->Look("folder").size, 0u);
    EXPECT_EQ(this->Look("folder").Attributes(), 16u);
    EXPECT_FALSE(this->Look("file").isFolder);
    EXPECT_EQ(this->Look("file").size, 5u);
    EXPECT_EQ(this->Look("file").Attributes(), 32u);
    EXPECT_EQ(this->TheDisk().SetReadOnly(this->At("file"), true), 0u);
    EXPECT_EQ(this->Look("file").Attributes(), 33u);
    EXPECT_EQ(this->TheDisk().SetReadOnly(this->At("file"), false), 0u);
    EXPECT_EQ(this->Look("file").Attributes(), 32u);
    EXPECT_EQ(this->TheDisk().SetReadOnly(this->At("none"), true), 2u);
}

TYPED_TEST(DiskTest, ListsNamesOfFoldersAlone) {
    this->PutFolder("folder");
    this->PutFolder("folder/below");
    this->Put("folder/file", "");
    EXPECT_THAT(this->TheDisk().Names(this->At("folder")), UnorderedElementsAre("below", "file"));
    EXPECT_THAT(this->TheDisk().Names(this->At("folder/file")), IsEmpty());
    EXPECT_THAT(this->TheDisk().Names(this->At("none")), IsEmpty());
}

TYPED_TEST(DiskTest, MakesAndRemovesFoldersOneByOne) {
    Disk& disk = this->TheDisk();
    this->Put("file", "");
    EXPECT_EQ(disk.MakeFolder(this->At("a/b")), 2u);
    EXPECT_EQ(disk.MakeFolder(this->At("file/b")), 3u);
    EXPECT_EQ(disk.MakeFolder(this->At("a")), 0u);
    EXPECT_EQ(disk.MakeFolder(this->At("a")), 183u);
    EXPECT_EQ(disk.MakeFolder(this->At("file")), 183u);
    EXPECT_EQ(disk.MakeFolder(this->At(std::string(256, 'n'))), 206u);
    EXPECT_EQ(disk.MakeFolder(this->At("a/b")), 0u);
    EXPECT_EQ(disk.RemoveFolder(this->At("a")), 145u);
    EXPECT_EQ(disk.RemoveFolder(this->At("file")), 3u);
    EXPECT_EQ(disk.RemoveFolder(this->At("none")), 2u);
    EXPECT_EQ(disk.RemoveFolder(this->At("a/b")), 0u);
    EXPECT_EQ(this->CodeOf("a/b"), 2u);
    EXPECT_EQ(disk.RemoveFolder(this->At("a")), 0u);
}

TYPED_TEST(DiskTest, RemovesFiles) {
    this->PutFolder("folder");
    this->Put("file", "x");
    EXPECT_EQ(this->TheDisk().RemoveFile(this->At("none")), 2u);
    EXPECT_EQ(this->TheDisk().RemoveFile(this->At("file/none")), 3u);
    EXPECT_EQ(this->TheDisk().RemoveFile(this->At("folder")), 5u);
    EXPECT_EQ(this->TheDisk().RemoveFile(this->At("file")), 0u);
    EXPECT_EQ(this->CodeOf("file"), 2u);
}

TYPED_TEST(DiskTest, RenamesFilesOverFilesAndFoldersOverEmptyOnes) {
    Disk& disk = this->TheDisk();
    this->PutFolder("d");
    this->PutFolder("full");
    this->PutFolder("empty");
    this->Put("full/file", "below");
    this->Put("f", "f");
    this->Put("g", "g");
    const auto rename = [&](const std::string& from, const std::string& to) {
        return disk.Rename(this->At(from), this->At(to));
    };
    EXPECT_EQ(rename("none", "x"), 2u);
    EXPECT_EQ(rename("f", "none/x"), 2u);
    EXPECT_EQ(rename("f", "g/x"), 3u);
    EXPECT_EQ(rename("f", "d"), 5u);
    EXPECT_EQ(rename("d", "f"), 3u);
    EXPECT_EQ(rename("d", "full"), 145u);
    EXPECT_EQ(rename("full", "full/below"), 31u);
    EXPECT_EQ(rename("f", "f"), 0u);
    EXPECT_EQ(rename("f", std::string(256, 'n')), 206u);
    EXPECT_EQ(this->Read("f"), "f");
    EXPECT_EQ(rename("f", "g"), 0u);
    EXPECT_EQ(this->Read("g"), "f");
    EXPECT_EQ(this->CodeOf("f"), 2u);
    EXPECT_EQ(rename("full", "empty"), 0u);
    EXPECT_EQ(this->Read("empty/file"), "below");
    EXPECT_EQ(this->CodeOf("full"), 2u);
    EXPECT_EQ(rename("empty/file", "d/moved"), 0u);
    EXPECT_EQ(this->Read("d/moved"), "below");
    EXPECT_THAT(disk.Names(this->At("empty")), IsEmpty());
}

TYPED_TEST(DiskTest, ReplacesFilesWhole) {
    Disk& disk = this->TheDisk();
    this->PutFolder("folder");
    this->Put("folder/file", "first and longer");
    this->Put("folder/file", "second");
    EXPECT_EQ(this->Read("folder/file"), "second");
    EXPECT_EQ(disk.Replace(this->At("folder"), "x", nullptr), 5u);
    EXPECT_EQ(disk.Replace(this->At("none/file"), "x", nullptr), 2u);
    EXPECT_EQ(disk.Replace(this->At("folder/file/below"), "x", nullptr), 3u);
    EXPECT_EQ(this->Read("folder/file"), "second");
    EXPECT_THAT(disk.Names(this->At("folder")), ElementsAre("file"));
}

TYPED_TEST(DiskTest, AReplacedFileHasTheMarksThatItIsGivenOrNone) {
    const FileMarks marks = {{0x12345678, 0x01BF53EB}, true};
    ASSERT_EQ(this->TheDisk().Replace(this->At("file"), "x", &marks), 0u);
    EXPECT_EQ(Ticks(this->Look("file").written), Ticks(marks.written));
    EXPECT_EQ(this->Look("file").Attributes(), 33u);
    this->Put("file", "y");
    EXPECT_EQ(this->Look("file").Attributes(), 32u);
    EXPECT_GT(this->Look("file").written.dwHighDateTime, marks.written.dwHighDateTime);
}

TYPED_TEST(DiskTest, AReplacedFileStaysAsItWasForWhoHasItOpen) {
    this->Put("file", "old");
    const std::unique_ptr<DiskFile> open = this->Open("file", DiskOpening::Read);
    this->Put("file", "newer");
    char bytes[8];
    std::size_t count = 0;
    EXPECT_EQ(open->Read(0, bytes, sizeof bytes, &count), 0u);
    EXPECT_EQ(std::string_view(bytes, count), "old");
    EXPECT_EQ(this->Read("file"), "newer");
}

TYPED_TEST(DiskTest, ARemovedFileStaysForWhoHasItOpen) {
    this->Put("file", "old");
    std::unique_ptr<DiskFile> open = this->Open("file", DiskOpening::Write);
    ASSERT_EQ(this->TheDisk().RemoveFile(this->At("file")), 0u);
    this->Put("another", "one that must not take its place");
    EXPECT_EQ(open->Write(3, "er"), 0u);
    char bytes[8];
    std::size_t count = 0;
    EXPECT_EQ(open->Read(0, bytes, sizeof bytes, &count), 0u);
    EXPECT_EQ(std::string_view(bytes, count), "older");
    EXPECT_EQ(this->CodeOf("file"), 2u);
    open.reset();
    this->Put("further", "f");
    EXPECT_EQ(this->Read("another"), "one that must not take its place");
    EXPECT_EQ(this->Read("further"), "f");
}

TYPED_TEST(DiskTest, OpensAsAsked) {
    this->PutFolder("folder");
    this->Put("file", "bytes");
    EXPECT_EQ(this->CodeOfOpening("none", DiskOpening::Read), 2u);
    EXPECT_EQ(this->CodeOfOpening("none", DiskOpening::Write), 2u);
    EXPECT_EQ(this->CodeOfOpening("none", DiskOpening::Truncate), 2u);
    EXPECT_EQ(this->CodeOfOpening("none/file", DiskOpening::Create), 2u);
    EXPECT_EQ(this->CodeOfOpening("file/file", DiskOpening::Create), 3u);
    EXPECT_EQ(this->CodeOfOpening("file", DiskOpening::Create), 183u);
    EXPECT_EQ(this->CodeOfOpening("folder", DiskOpening::Write), 5u);
    EXPECT_EQ(this->CodeOfOpening("file", DiskOpening::Write), 0u);
    EXPECT_EQ(this->Read("file"), "bytes");
    EXPECT_EQ(this->CodeOfOpening("file", DiskOpening::Truncate), 0u);
    EXPECT_EQ(this->Read("file"), "");
    EXPECT_EQ(this->CodeOfOpening("new", DiskOpening::Create), 0u);
    EXPECT_EQ(this->Look("new").Attributes(), 32u);
    std::unique_ptr<DiskFile> readOnly;
    EXPECT_EQ(this->TheDisk().Open(this->At("fixed"), DiskOpening::Create, true, &readOnly), 0u);
    EXPECT_EQ(readOnly->Write(0, "once"), 0u) << "who made it may write it";
    EXPECT_EQ(this->Look("fixed").Attributes(), 33u);
}

TYPED_TEST(DiskTest, ReadsAndWritesAnywhere) {
    const std::unique_ptr<DiskFile> file = this->Open("new", DiskOpening::Create);
    EXPECT_EQ(file->Write(0, "0123456789"), 0u);
    EXPECT_EQ(file->Write(3, "abc"), 0u);
    EXPECT_EQ(file->Write(12, "xy"), 0u);
    EXPECT_EQ(file->Write(100, ""), 0u);
    EXPECT_EQ(this->Read("new"), std::string("012abc6789\0\0xy", 14));
    char bytes[8];
    std::size_t count = 0;
    EXPECT_EQ(file->Read(4, bytes, 4, &count), 0u);
    EXPECT_EQ(std::string_view(bytes, count), "bc67");
    EXPECT_EQ(file->Read(12, bytes, 8, &count), 0u);
    EXPECT_EQ(std::string_view(bytes, count), "xy");
    EXPECT_EQ(file->Read(14, bytes, 8, &count), 0u);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(file->Read(1000, bytes, 8, &count), 0u);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(file->Resize(3), 0u);
    EXPECT_EQ(file->Sync(), 0u);
    EXPECT_EQ(this->Read("new"), "012");
    EXPECT_EQ(file->Resize(4), 0u);
    EXPECT_EQ(this->Read("new"), std::string("012\0", 4));
    DiskEntry entry;
    EXPECT_EQ(file->Look(&entry), 0u);
    EXPECT_EQ(entry.size, 4u);
}

TYPED_TEST(DiskTest, ReadsLargeFilesWhole) {
    const std::string large(300'000, 'l');
    this->Put("large", large);
    EXPECT_EQ(this->Read("large"), large);
}

TYPED_TEST(DiskTest, KeepsTimesToTheTenthOfAMicrosecond) {
    this->Put("file", "x");
    const FILETIME time = {0xD53E8001, 0x0194FCAB};  // 1958
    EXPECT_EQ(this->TheDisk().SetWritten(this->At("file"), time), 0u);
    EXPECT_EQ(Ticks(this->Look("file").written), Ticks(time));
    EXPECT_EQ(this->TheDisk().SetWritten(this->At("none"), time), 2u);
    const std::unique_ptr<DiskFile> file = this->Open("file", DiskOpening::Write);
    const FileMarks marks = {{1, 0x01BF53EB}, true};
    EXPECT_EQ(file->Mark(marks), 0u);
    EXPECT_EQ(Ticks(this->Look("file").written), Ticks(marks.written));
    EXPECT_EQ(this->Look("file").Attributes(), 33u);
    EXPECT_EQ(file->Mark({time, false}), 0u);
    EXPECT_EQ(this->Look("file").Attributes(), 33u) << "the mark isn't taken away";
}

TYPED_TEST(DiskTest, ChangesMoveTheTimeOfTheFileAndOfItsFolder) {
    const FILETIME old = {0, 0x01BF53EB};
    const auto changes = [&](const std::string& below, const std::function<void()>& change) {
        EXPECT_EQ(this->TheDisk().SetWritten(this->At(below), old), 0u);
        change();
        return Ticks(this->Look(below).written) != Ticks(old);
    };
    this->PutFolder("d");
    EXPECT_TRUE(changes("d", [&] { this->Put("d/file", "x"); }));
    EXPECT_TRUE(changes("d", [&] { this->PutFolder("d/e"); }));
    EXPECT_TRUE(changes("d", [&] { this->TheDisk().RemoveFolder(this->At("d/e")); }));
    EXPECT_TRUE(changes("d", [&] { this->TheDisk().Rename(this->At("d/file"), this->At("d/other")); }));
    EXPECT_TRUE(changes("d/other", [&] { this->Open("d/other", DiskOpening::Write)->Write(0, "y"); }));
    EXPECT_TRUE(changes("d/other", [&] { this->Open("d/other", DiskOpening::Truncate); }));
    EXPECT_FALSE(changes("d", [&] { this->Open("d/other", DiskOpening::Write)->Write(0, "y"); }));
    EXPECT_TRUE(changes("d", [&] { this->TheDisk().RemoveFile(this->At("d/other")); }));
}

TYPED_TEST(DiskTest, TreesAreCopiedToEitherKind) {
    this->PutFolder("tree");
    this->PutFolder("tree/empty");
    this->PutFolder("tree/full");
    const FileMarks marks = {{5, 0x01BF53EB}, true};
    ASSERT_EQ(this->TheDisk().Replace(this->At("tree/full/file"), "bytes", &marks), 0u);
    const HostFolder host;
    const std::shared_ptr<MemoryDisk> memory = std::make_shared<MemoryDisk>();
    HostDisk hostDisk;
    const auto expectTree = [&](Disk& disk, const std::string& root) {
        EXPECT_EQ(CopyTree(this->TheDisk(), this->At("tree"), disk, root), 0u);
        EXPECT_THAT(disk.Names(root), UnorderedElementsAre("empty", "full"));
        EXPECT_THAT(disk.Names(root + "/empty"), IsEmpty());
        std::string bytes;
        EXPECT_EQ(disk.ReadWhole(root + "/full/file", &bytes), 0u);
        EXPECT_EQ(bytes, "bytes");
        DiskEntry entry;
        EXPECT_EQ(disk.Look(root + "/full/file", &entry), 0u);
        EXPECT_EQ(Ticks(entry.written), Ticks(marks.written));
        EXPECT_TRUE(entry.isReadOnly);
    };
    expectTree(hostDisk, host.Root() + "/copy");
    expectTree(*memory, "/copy");
    EXPECT_EQ(CopyTree(this->TheDisk(), this->At("tree"), *memory, "/none/copy"), 2u);
}

// ---- copies of a disk in memory -------------------------------------------------------------------------------------

std::string ReadFrom(Disk& disk, const std::string& path) {
    std::string bytes;
    const DWORD code = disk.ReadWhole(path, &bytes);
    return code == 0 ? bytes : "code " + std::to_string(code);
}

TEST(MemoryDiskCopy, IsIndependentInBothDirections) {
    const auto disk = std::make_shared<MemoryDisk>();
    disk->MakeFolder("/d");
    disk->Replace("/d/f", "first", nullptr);
    disk->Replace("/d/g", "second", nullptr);
    const std::shared_ptr<MemoryDisk> copy = disk->Copy();
    std::unique_ptr<DiskFile> file;
    ASSERT_EQ(disk->Open("/d/f", DiskOpening::Write, false, &file), 0u);
    file->Write(0, "F");
    copy->RemoveFile("/d/g");
    copy->MakeFolder("/e");
    disk->SetReadOnly("/d/g", true);
    EXPECT_EQ(ReadFrom(*disk, "/d/f"), "First");
    EXPECT_EQ(ReadFrom(*copy, "/d/f"), "first");
    EXPECT_EQ(ReadFrom(*disk, "/d/g"), "second");
    EXPECT_EQ(ReadFrom(*copy, "/d/g"), "code 2");
    EXPECT_EQ(disk->Look("/e", nullptr), 2u);
}

TEST(MemoryDiskCopy, HasOpenFilesAndNotThoseThatAreGone) {
    const auto disk = std::make_shared<MemoryDisk>();
    disk->Replace("/kept", "k", nullptr);
    disk->Replace("/gone", "g", nullptr);
    std::unique_ptr<DiskFile> kept, gone;
    ASSERT_EQ(disk->Open("/kept", DiskOpening::Write, false, &kept), 0u);
    ASSERT_EQ(disk->Open("/gone", DiskOpening::Write, false, &gone), 0u);
    disk->RemoveFile("/gone");
    const std::shared_ptr<MemoryDisk> copy = disk->Copy();
    EXPECT_THAT(copy->Names("/"), ElementsAre("kept"));
    kept->Write(0, "K");
    gone->Write(0, "G");
    kept.reset();
    gone.reset();
    EXPECT_EQ(ReadFrom(*copy, "/kept"), "k");
    EXPECT_EQ(copy->RemoveFile("/kept"), 0u);
    EXPECT_EQ(copy->Replace("/new", "n", nullptr), 0u);
    EXPECT_EQ(ReadFrom(*copy, "/new"), "n");
    EXPECT_EQ(ReadFrom(*disk, "/kept"), "K");
}

TEST(MemoryDisk, RefusesFilesThatWouldTakeTheProcessesMemory) {
    const auto disk = std::make_shared<MemoryDisk>();
    std::unique_ptr<DiskFile> file;
    ASSERT_EQ(disk->Open("/f", DiskOpening::Create, false, &file), 0u);
    EXPECT_EQ(file->Write(std::uint64_t{1} << 40, "x"), 112u);
    EXPECT_EQ(file->Write(~std::uint64_t{0}, "x"), 112u);
    EXPECT_EQ(file->Resize(std::uint64_t{1} << 40), 112u);
    DiskEntry entry;
    EXPECT_EQ(file->Look(&entry), 0u);
    EXPECT_EQ(entry.size, 0u);
}

TEST(MemoryDisk, KeepsItsRoot) {
    const auto disk = std::make_shared<MemoryDisk>();
    disk->MakeFolder("/d");
    EXPECT_EQ(disk->RemoveFolder("/"), 5u);
    EXPECT_EQ(disk->Rename("/", "/e"), 5u);
    EXPECT_EQ(disk->Rename("/d", "/"), 5u);
    EXPECT_EQ(disk->MakeFolder("/"), 183u);
    EXPECT_THAT(disk->Names("/"), ElementsAre("d"));
}

TEST(MemoryDisk, LastsAsLongAsItsOpenFiles) {
    auto disk = std::make_shared<MemoryDisk>();
    std::unique_ptr<DiskFile> file;
    ASSERT_EQ(disk->Open("/f", DiskOpening::Create, false, &file), 0u);
    disk.reset();
    EXPECT_EQ(file->Write(0, "x"), 0u);
}

}  // namespace
}  // namespace pikel::simulated

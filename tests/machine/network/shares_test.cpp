// What the machine of the 9x family shares, and the network library's calls about it.
#include "machine/network/shares.h"

#include <cstring>

#include "machine/operations.h"
#include "machine/system/restart.h"
#include "support/machine_test.h"

namespace pikel::simulated {
namespace {

using namespace testing_support;

constexpr char kMemory[] = "HKLM\\SOFTWARE\\Simulated Network\\Shares";

class SharesTest : public MachineTest {
  protected:
    SharesTest() : MachineTest("win98") {}
    Shares TheShares() { return Shares(Machine()); }
    void StartWith(const std::string& name, const char* path) {
        Machine().Registry().SetText(Shares::StartKeyOf(name), "Path", path);
        Machine().Registry().SetNumber(Shares::StartKeyOf(name), "Type", 1);
    }
};

share_info_50 Info(const char* name, const char* path, const char* remark = nullptr) {
    share_info_50 info{};
    std::strncpy(info.shi50_netname, name, sizeof info.shi50_netname - 1);
    info.shi50_type = 1;
    info.shi50_flags = 0x102;
    info.shi50_path = const_cast<char*>(path);
    info.shi50_remark = const_cast<char*>(remark);
    return info;
}

DWORD Add(const share_info_50& info, SHORT level = 50, WORD size = sizeof(share_info_50), LPCSTR server = nullptr) {
    return NetShareAdd(server, level, reinterpret_cast<LPCSTR>(&info), size);
}

DWORD Set(const char* name, const share_info_50& info, SHORT parameter = 0) {
    return NetShareSetInfo(nullptr, name, 50, reinterpret_cast<LPCSTR>(&info), sizeof info, parameter);
}

TEST_F(SharesTest, SystemSharesWhatItStartsWith) {
    StartWith("LASER", "P1");
    const std::string before = Machine().Registry().Text();
    ASSERT_TRUE(TheShares().Find("laser"));
    EXPECT_EQ(TheShares().Find("LASER")->path, "P1");
    EXPECT_EQ(Machine().Registry().Text(), before) << "looking changes nothing";
}

TEST_F(SharesTest, ShareLivesWithoutAKeyOfItsStart) {
    ASSERT_EQ(Add(Info("LASER", "P1")), 0u);
    EXPECT_TRUE(TheShares().Find("LASER"));
    EXPECT_FALSE(Machine().Registry().KeyExists(Shares::StartKeyOf("LASER")));
    Test().Reopen();
    EXPECT_TRUE(TheShares().Find("LASER")) << "the memory of the machine outlives a process";
}

TEST_F(SharesTest, KeyThatIsWrittenLaterSharesNothingBeforeTheNextStart) {
    StartWith("OLD", "P0");
    ASSERT_EQ(Add(Info("LASER", "P1")), 0u);
    EXPECT_TRUE(TheShares().Find("OLD"));
    StartWith("NEW", "P2");
    EXPECT_FALSE(TheShares().Find("NEW"));
    Restart(Machine());
    EXPECT_TRUE(TheShares().Find("NEW"));
    EXPECT_TRUE(TheShares().Find("OLD"));
    EXPECT_FALSE(TheShares().Find("LASER")) << "nobody entered it into the registry";
    EXPECT_FALSE(Machine().Registry().KeyExists(kMemory));
}

TEST_F(SharesTest, RemovalLeavesTheKeyOfItsStart) {
    StartWith("LASER", "P1");
    EXPECT_EQ(NetShareDel(nullptr, "LASER", 0), 0u);
    EXPECT_FALSE(TheShares().Find("LASER"));
    EXPECT_TRUE(Machine().Registry().KeyExists(Shares::StartKeyOf("LASER")));
    EXPECT_EQ(NetShareDel(nullptr, "LASER", 0), DWORD{NERR_NetNameNotFound});
}

TEST_F(SharesTest, AddingChecksWhatItIsGiven) {
    EXPECT_EQ(Add(Info("", "P1")), DWORD{ERROR_INVALID_NAME});
    EXPECT_EQ(Add(Info("A\\B", "P1")), DWORD{ERROR_INVALID_NAME});
    EXPECT_EQ(Add(Info("A", nullptr)), 2116u);
    EXPECT_EQ(Add(Info("A", "")), 2116u);
    share_info_50 unknownType = Info("A", "P1");
    unknownType.shi50_type = 4;
    EXPECT_EQ(Add(unknownType), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Add(Info("A", "P1"), 1), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(Add(Info("A", "P1"), 50, sizeof(share_info_50) - 1), DWORD{NERR_BufTooSmall});
    EXPECT_EQ(Add(Info("A", "P1"), 50, sizeof(share_info_50), "\\\\OTHER"), 53u);
    EXPECT_EQ(NetShareAdd(nullptr, 50, nullptr, 100), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_FALSE(Machine().Registry().KeyExists(kMemory));
    EXPECT_EQ(Add(Info("A", "P1"), 50, sizeof(share_info_50), "\\\\PC-WIN98"), 0u);
    EXPECT_EQ(Add(Info("a", "P2")), DWORD{NERR_DuplicateShare});
    EXPECT_EQ(TheShares().Find("A")->path, "P1");
}

TEST_F(SharesTest, ChangeLeavesNameAndType) {
    ASSERT_EQ(Add(Info("LASER", "P1")), 0u);
    share_info_50 changed = Info("OTHER", "P2", "moved");
    changed.shi50_type = 0;
    std::strcpy(changed.shi50_rw_password, "12345678");
    EXPECT_EQ(Set("laser", changed), 0u);
    const std::optional<Share> share = TheShares().Find("LASER");
    ASSERT_TRUE(share);
    EXPECT_EQ(share->type, 1);
    EXPECT_EQ(share->path, "P2");
    EXPECT_EQ(share->remark, "moved");
    EXPECT_EQ(share->readWritePassword, "12345678");
    EXPECT_FALSE(TheShares().Find("OTHER"));
    EXPECT_EQ(Set("OTHER", changed), DWORD{NERR_NetNameNotFound});
    EXPECT_EQ(Set("LASER", Info("LASER", "")), 2116u);
    EXPECT_EQ(Set("LASER", changed, 4), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(NetShareSetInfo(nullptr, nullptr, 50, reinterpret_cast<LPCSTR>(&changed), sizeof changed, 0),
              DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(SharesTest, ReadTellsTheSizeThatItNeeds) {
    ASSERT_EQ(Add(Info("LASER", "P1", "remark")), 0u);
    char bytes[200];
    WORD needed = 0;
    const WORD whole = sizeof(share_info_50) + 7 + 3;
    EXPECT_EQ(NetShareGetInfo(nullptr, "LASER", 50, bytes, whole - 1, &needed), DWORD{NERR_BufTooSmall});
    EXPECT_EQ(needed, whole);
    EXPECT_EQ(NetShareGetInfo(nullptr, "LASER", 50, nullptr, 0, &needed), DWORD{NERR_BufTooSmall});
    ASSERT_EQ(NetShareGetInfo(nullptr, "laser", 50, bytes, whole, &needed), 0u);
    share_info_50 info;
    std::memcpy(&info, bytes, sizeof info);
    EXPECT_STREQ(info.shi50_remark, "remark");
    EXPECT_STREQ(info.shi50_path, "P1");
    EXPECT_EQ(info.shi50_flags, 0x102);
    EXPECT_EQ(NetShareGetInfo(nullptr, "NOBODY", 50, bytes, whole, &needed), DWORD{NERR_NetNameNotFound});
    EXPECT_EQ(NetShareGetInfo(nullptr, "A\\B", 50, bytes, whole, &needed), DWORD{NERR_NetNameNotFound});
    EXPECT_EQ(NetShareGetInfo(nullptr, "LASER", 2, bytes, whole, &needed), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(NetShareGetInfo(nullptr, "LASER", 50, bytes, whole, nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(NetShareGetInfo(nullptr, nullptr, 50, bytes, whole, &needed), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(NetShareDel(nullptr, nullptr, 0), DWORD{ERROR_INVALID_PARAMETER});
}

}  // namespace
}  // namespace pikel::simulated

#include "colour/profile_data.h"

#include <algorithm>
#include <array>
#include <string>

#include "icc_profile.h"
#include "support/calls.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

constexpr char kPath[] = "C:\\Profiles\\test.icc";

class ProfileData : public MachineTest {
  protected:
    DWORD Read(const IccProfile& profile) {
        WriteFileOn(Machine(), kPath, profile.Bytes());
        return ReadFile();
    }
    DWORD ReadFile(LPCSTR path = kPath) {
        return WIToolReadProfileData(path, m_ident.data(), m_manufacturer.data(), m_model.data(), m_kind.data());
    }

    // Texts are left over from before, so that a missing NUL shows.
    ProfileData() {
        m_ident.fill('#');
        m_manufacturer.fill('#');
        m_model.fill('#');
        m_kind.fill('#');
    }
    std::string Ident() const { return std::string(m_ident.begin(), m_ident.end()); }

    std::array<BYTE, kProfileIdentSize> m_ident;
    std::array<char, kProfileTextSize> m_manufacturer;
    std::array<char, kProfileTextSize> m_model;
    std::array<char, kProfileKindSize> m_kind;
};

TEST_F(ProfileData, HasClassSignaturesAndBothDescriptions) {
    IccProfile profile("mntr");
    profile.PutDescription(320, "Nordlicht").PutDescription(420, "Aurora 500");
    EXPECT_EQ(Read(profile), 1u);
    EXPECT_STREQ(m_kind.data(), "mntr");
    EXPECT_EQ(Ident(), "junkNORDA500");
    EXPECT_STREQ(m_manufacturer.data(), "Nordlicht");
    EXPECT_STREQ(m_model.data(), "Aurora 500");
}

TEST_F(ProfileData, IsReadFromTheFirst1024BytesInOneCall) {
    IccProfile profile("mntr");
    profile.PutDescription(320, "Nordlicht").PutDescription(420, "Aurora 500");
    WriteFileOn(Machine(), kPath, profile.Bytes());
    ForgetCalls(Test());
    EXPECT_EQ(ReadFile(), 1u);
    EXPECT_THAT(Test().TakeCalls(), ElementsAre(MatchesRegex("OpenFile\\(\".*test.icc\", &, 0x0\\) = 0x[0-9a-f]+"),
                                                MatchesRegex("_lread\\(0x[0-9a-f]+, &, 0x400\\) = 0x400"),
                                                MatchesRegex("_lclose\\(0x[0-9a-f]+\\) = 0x0")));
}

/// Where the blocks lie, and what comes of it.
struct LayoutCase {
    const char* name;
    IccProfile profile;
    DWORD result;
    const char* manufacturer;
    const char* model;
    bool logsError = false;
};

TEST_F(ProfileData, DescriptionsAreLookedForBetweenFixedBounds) {
    const LayoutCase cases[] = {
        {"first at its lower bound", IccProfile("mntr").PutDescription(304, "M").PutDescription(600, "N"), 1, "M", "N"},
        {"first below its lower bound", IccProfile("mntr").PutDescription(303, "M"), 0, "", ""},
        {"first at its upper bound", IccProfile("mntr").PutDescription(511, "M").PutDescription(600, "N"), 1, "M", "N"},
        {"first above its upper bound", IccProfile("mntr").PutDescription(512, "M").PutDescription(600, "N"), 0, "",
         ""},
        {"none", IccProfile("mntr"), 0, "", ""},
        {"one alone", IccProfile("mntr").PutDescription(400, "M"), 0, "M", "", true},
        {"second right behind the first's head", IccProfile("mntr").PutDescription(400, "", 0).PutDescription(412, "N"),
         1, "", "N"},
        {"second inside the first's head", IccProfile("mntr").PutDescription(400, "M").PutDescription(411, "N"), 0,
         "esc", "", true},
        {"second far behind", IccProfile("mntr").PutDescription(400, "M").PutDescription(900, "N"), 1, "M", "N"},
        {"second beyond what is read", IccProfile("mntr").PutDescription(400, "M").PutDescription(1020, "N"), 0, "M",
         "", true},
        {"third is of no interest",
         IccProfile("mntr").PutDescription(400, "M").PutDescription(500, "N").PutDescription(600, "O"), 1, "M", "N"},
    };
    Test().TurnLogOn();
    for (const LayoutCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Read(c.profile), c.result);
        EXPECT_STREQ(m_manufacturer.data(), c.manufacturer);
        EXPECT_STREQ(m_model.data(), c.model);
        if (c.logsError) {
            EXPECT_THAT(Test().TakeLog(), ElementsAre("WIToolReadProfileData-Read Error"));
        } else {
            EXPECT_THAT(Test().TakeLog(), IsEmpty());
        }
    }
}

TEST_F(ProfileData, FirstTextBlockIsSteppedOverFrom8BytesBehindItsText) {
    const LayoutCase cases[] = {
        {"description behind the text",
         IccProfile("mntr").PutText(304, "12345678901234567890").PutDescription(340, "M").PutDescription(420, "N"), 1,
         "M", "N"},
        // The string begins at 312 and is measured from 320 on: 4 characters. So the search goes on at 304 + 8 + 4, in
        // front of the text's own last word.
        {"text that ends like a description counts as one",
         IccProfile("mntr").PutText(304, "12345678desc").PutDescription(420, "N"), 1, "", "N"},
        {"description before a text block is skipped",
         IccProfile("mntr")
             .PutDescription(304, "K")
             .PutText(330, "12345678901234567890")
             .PutDescription(360, "M")
             .PutDescription(420, "N"),
         1, "M", "N"},
        {"text of 8 characters moves the search by 8 alone",
         IccProfile("mntr").PutText(304, "12345678").PutDescription(321, "M").PutDescription(420, "N"), 1, "M", "N"},
        {"second text block is not stepped over",
         IccProfile("mntr")
             .PutText(304, "12345678")
             .PutDescription(330, "M")
             .PutText(350, "x")
             .PutDescription(420, "N"),
         1, "M", "N"},
        {"text that ends at the bound leaves no room",
         IccProfile("mntr").PutText(304, std::string(8 + 200, 't')).PutDescription(600, "M").PutDescription(700, "N"),
         0, "", ""},
        {"text that ends below the bound leaves room",
         IccProfile("mntr").PutText(304, std::string(8 + 180, 't')).PutDescription(505, "M").PutDescription(700, "N"),
         1, "M", "N"},
        {"text that runs to the end of what is read", IccProfile("mntr").PutText(304, std::string(1500, 't')), 0, "",
         ""},
        {"text block at 511 is the last that counts",
         IccProfile("mntr").PutDescription(320, "K").PutText(511, "12345678").PutDescription(600, "M"), 0, "", ""},
        {"text block at 512 doesn't count",
         IccProfile("mntr").PutDescription(320, "M").PutText(512, "12345678").PutDescription(600, "N"), 1, "M", "N"},
        {"text block at 303 doesn't count",
         IccProfile("mntr").PutText(303, "x").PutDescription(330, "M").PutDescription(420, "N"), 1, "M", "N"},
    };
    Test().TurnLogOn();
    for (const LayoutCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Read(c.profile), c.result);
        EXPECT_STREQ(m_manufacturer.data(), c.manufacturer);
        EXPECT_STREQ(m_model.data(), c.model);
        EXPECT_THAT(Test().TakeLog(), IsEmpty());
    }
}

TEST_F(ProfileData, DescriptionIsAsLongAsItsLengthByteSays) {
    IccProfile profile("mntr");
    profile.PutDescription(304, "Nordlicht GmbH", 9).PutDescription(600, "Aurora", 6);
    EXPECT_EQ(Read(profile), 1u);
    EXPECT_STREQ(m_manufacturer.data(), "Nordlicht");
    EXPECT_STREQ(m_model.data(), "Aurora");
}

TEST_F(ProfileData, LowByteOfTheLengthAloneIsRead) {
    IccProfile profile("mntr");
    profile.PutDescription(304, std::string(300, 'M'), 0x103).PutDescription(700, "N", 0x10001);
    EXPECT_EQ(Read(profile), 1u);
    EXPECT_STREQ(m_manufacturer.data(), "MMM");
    EXPECT_STREQ(m_model.data(), "N");
}

TEST_F(ProfileData, LongestDescriptionFitsWithANul) {
    IccProfile profile("mntr");
    profile.PutDescription(304, std::string(255, 'M'), 255).PutDescription(600, std::string(255, 'N'), 255);
    EXPECT_EQ(Read(profile), 1u);
    EXPECT_EQ(std::string(m_manufacturer.data()), std::string(255, 'M'));
    EXPECT_EQ(std::string(m_model.data()), std::string(255, 'N'));
}

TEST_F(ProfileData, DescriptionNearTheEndIsCutToTheBytesThatWereRead) {
    struct Case {
        std::size_t offset;
        std::size_t length;
    };
    for (const Case& c :
         {Case{757, 255}, Case{758, 254}, Case{1000, 12}, Case{1011, 1}, Case{1012, 0}, Case{1013, 0}, Case{1016, 0}}) {
        IccProfile profile("mntr");
        profile.PutDescription(304, "M").PutDescription(c.offset, std::string(255, 'N'), 255);
        EXPECT_EQ(Read(profile), 1u) << c.offset;
        EXPECT_EQ(std::string(m_model.data()), std::string(c.length, 'N')) << c.offset;
    }
}

TEST_F(ProfileData, ShortFileCountsAsFilledWithZeros) {
    IccProfile whole("prtr");
    whole.PutDescription(304, "Nordlicht").PutDescription(400, "Aurora 500");
    struct Case {
        std::size_t size;
        DWORD result;
        const char* kind;
        const char* manufacturer;
        const char* model;
    };
    for (const Case& c : {Case{0, 0, "", "", ""}, Case{14, 0, "pr", "", ""}, Case{50, 0, "prtr", "", ""},
                          Case{304, 0, "prtr", "", ""}, Case{320, 0, "prtr", "Nord", ""},
                          Case{416, 1, "prtr", "Nordlicht", "Auro"}, Case{500, 1, "prtr", "Nordlicht", "Aurora 500"}}) {
        EXPECT_EQ(Read(IccProfile(whole).Cut(c.size)), c.result) << c.size;
        EXPECT_STREQ(m_kind.data(), c.kind) << c.size;
        EXPECT_STREQ(m_manufacturer.data(), c.manufacturer) << c.size;
        EXPECT_STREQ(m_model.data(), c.model) << c.size;
    }
    EXPECT_EQ(Ident(), "junkNORDA500");
}

TEST_F(ProfileData, OfAFileThatCannotBeOpenedIsEmptyAndLogged) {
    Test().TurnLogOn();
    EXPECT_EQ(ReadFile("C:\\no such file.icc"), 0u);
    EXPECT_STREQ(m_manufacturer.data(), "");
    EXPECT_STREQ(m_model.data(), "");
    EXPECT_EQ(m_kind[0], '#') << "untouched";
    EXPECT_EQ(Ident(), std::string(kProfileIdentSize, '#'));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("WIToolReadProfileData Open Error"));
}

TEST_F(ProfileData, OfAFileThatCannotBeReadIsEmptyAndLogged) {
    WriteFileOn(Machine(), kPath, IccProfile("mntr").Bytes());
    faults::FailCall("_lread", 1, 21);
    Test().TurnLogOn();
    EXPECT_EQ(ReadFile(), 0u);
    EXPECT_STREQ(m_manufacturer.data(), "");
    EXPECT_EQ(m_kind[0], '#') << "untouched";
    EXPECT_THAT(Test().TakeLog(), ElementsAre("WIToolReadProfileData _lread Error"));
    EXPECT_THAT(Test().TakeCallNames({"_lclose"}), ElementsAre("_lclose"));
}

TEST_F(ProfileData, FailuresAreLoggedAtDetailLevelAlone) {
    Test().TurnLogOn(1);
    ReadFile("C:\\no such file.icc");
    Read(IccProfile("mntr").PutDescription(400, "M"));
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

}  // namespace

}  // namespace pikel

// The port SDK, as a program gets it: by its path.
#include "machine/spooler/port_sdk.h"

#include "support/spooler_test.h"
#include "machine/services/services.h"
#include "machine/spooler/ports.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;

class PortSdkTest : public SpoolerTest {
  protected:
    static OwnedBstr Text(std::u16string_view text) {
        return OwnedBstr(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    }
    DWORD Create(std::u16string_view monitor, std::string name, std::u16string_view configuration,
                 std::u16string_view queue = u"") {
        LookedUp<looked_up::CreatePort> create(kPortSdkPath, "CreatePort");
        if (!create) {
            return create.Status();
        }
        const OwnedBstr monitorText = Text(monitor);
        const OwnedBstr queueText = Text(queue);
        const OwnedBstr configurationText = Text(configuration);
        OwnedBstr result;
        const DWORD code =
            create.Call()(monitorText.Get(), name.data(), queueText.Get(), configurationText.Get(), result.Out());
        m_result = result ? std::u16string(result.Get(), SysStringLen(result.Get())) : u"none";
        return code;
    }
    std::string Key(const std::string& monitor, const std::string& name) {
        return PrintKey("Monitors\\" + monitor + "\\Ports\\" + name);
    }

    std::u16string m_result;
};

TEST_F(PortSdkTest, IsOnEveryMachineAndMakesPortsOfItsSystem) {
    for (const std::string& system : EverySystem()) {
        Start(system);
        const std::string monitor = Machine().Is9x()                            ? "Tarvo LPR Port"
                                    : Machine().Generation() == Generation::Nt4 ? "LPR Port"
                                                                                : "Standard TCP/IP Port";
        EXPECT_EQ(Create(ToWide(1252, monitor), "192.168.0.9", u"porttype=9100"), kPortCreated) << system;
        EXPECT_EQ(m_result, u"192.168.0.9") << system;
        Test().Reopen();
        const std::optional<Port> port = Ports(Machine()).Find("192.168.0.9");
        ASSERT_TRUE(port) << system;
        EXPECT_EQ(port->monitor, monitor) << system;
        EXPECT_TRUE(FileIsThere("C:\\Program Files")) << system;
    }
}

TEST_F(PortSdkTest, PortIsWhatTheConfigurationSays) {
    struct Case {
        std::u16string_view configuration;
        DWORD protocol;
        DWORD number;
        DWORD doubleSpool;
    };
    const Case cases[] = {
        {u"porttype=9100", 1, 9100, 0},
        {u"", 2, 515, 0},
        {u"bytecount=true", 2, 515, 1},
        {u"bytecount=false", 2, 515, 0},
        {u"PORTTYPE=9101;ByteCount=TRUE", 1, 9101, 1},
    };
    int number = 0;
    for (const Case& one : cases) {
        const std::string name = "P" + std::to_string(number++);
        EXPECT_EQ(Create(u"Standard TCP/IP Port", name, one.configuration, u"queue"), kPortCreated);
        const std::string key = Key("Standard TCP/IP Port", name);
        EXPECT_EQ(Registry().Number(key, "Protocol"), one.protocol) << name;
        EXPECT_EQ(Registry().Number(key, "PortNumber"), one.number) << name;
        EXPECT_EQ(Registry().Number(key, "Double Spool", 9), one.doubleSpool) << name;
        EXPECT_EQ(Registry().Text(key, "Queue"), "queue") << name;
        EXPECT_EQ(Registry().Text(key, "HostName"), name);
    }
}

TEST_F(PortSdkTest, RefusesWhatItDoesNotKnow) {
    for (std::u16string_view configuration : {u"porttype=", u"porttype=x", u"porttype=0", u"porttype=65536",
                                              u"porttype=9100x", u"bytecount", u"bytecount=1", u"speed=fast", u"=,"}) {
        EXPECT_EQ(Create(u"Standard TCP/IP Port", "P1", configuration), kPortBadArgument)
            << ToUtf8(1252, FromWide(1252, configuration));
        EXPECT_EQ(m_result, u"none");
    }
    for (const char* name : {"", "a\\b", "a,b"}) {
        EXPECT_EQ(Create(u"Standard TCP/IP Port", name, u""), kPortBadArgument) << name;
    }
    EXPECT_EQ(Create(u"No Such Monitor", "P1", u""), kPortBadArgument);
    EXPECT_EQ(Create(u"", "P1", u""), kPortBadArgument);
    EXPECT_FALSE(Ports(Machine()).Find("P1"));

    std::string name = "P1";
    BSTR result = nullptr;
    const OwnedBstr monitor = Text(u"Standard TCP/IP Port");
    EXPECT_EQ(CreatePort(nullptr, name.data(), nullptr, nullptr, &result), kPortBadArgument);
    EXPECT_EQ(CreatePort(monitor.Get(), nullptr, nullptr, nullptr, &result), kPortBadArgument);
    EXPECT_EQ(CreatePort(monitor.Get(), name.data(), nullptr, nullptr, nullptr), kPortBadArgument);
}

TEST_F(PortSdkTest, PortThatIsThereIsToldApart) {
    EXPECT_EQ(Create(u"Standard TCP/IP Port", "lpt1:", u""), kPortExists);
    ASSERT_EQ(Create(u"Standard TCP/IP Port", "P1", u""), kPortCreated);
    EXPECT_EQ(Create(u"Standard TCP/IP Port", "p1", u""), kPortExists);
    EXPECT_EQ(m_result, u"none");
}

TEST_F(PortSdkTest, NeedsTheSpoolerAndRights) {
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    EXPECT_EQ(Create(u"Standard TCP/IP Port", "P1", u""), kPortNotPossible);
    Machine().Services().SetState("Spooler", SERVICE_RUNNING);
    SystemDescription description = Machine().System();
    description.administrator = false;
    Machine().SetSystem(description);
    EXPECT_EQ(Create(u"Standard TCP/IP Port", "P1", u""), kPortNotPossible);
}

}  // namespace
}  // namespace pikel

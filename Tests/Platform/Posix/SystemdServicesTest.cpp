#include "Platform/Services.h"

#include <atomic>
#include <cstring>
#include <map>
#include <thread>

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include "Platform/Posix/UnitName.h"
#include "Support/ScopedVariable.h"
#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

std::atomic<bool> g_systemdRuns{false};

} // namespace

// In the place of libsystemd's, so that a test can be on a host with systemd or without.
extern "C" int sd_booted(void)
{
    return g_systemdRuns ? 1 : 0;
}

namespace {

struct SEscape {
    char const *name, *text, *escaped;
};
class EscapeUnitNameTest : public testing::TestWithParam<SEscape> {};

/// A service of util-linux, which no Debian is without.
constexpr char StandardService[] = "fstrim";

class CManager {
public:
    CManager() { EXPECT_EQ(Success, OpenServiceManager(m_handle)); }
    ~CManager() { EXPECT_EQ(Success, CloseServiceManager(m_handle)); }
    /// 0 when the service could be opened, and its configuration and state read; else the first error.
    ErrorCode Query(char const * name, std::string * config = nullptr)
    {
        ServiceHandle service = nullptr;
        ErrorCode error = OpenService(m_handle, name, service);
        if (error != Success) return error;
        char buffer[4096];
        std::uint32_t needed = 0;
        error = QueryServiceConfig(service, buffer, sizeof buffer, needed);
        if (error == Success && config != nullptr) *config = buffer;
        if (error == Success) error = QueryServiceStatus(service);
        CloseService(service);
        return error;
    }
    ServiceManagerHandle Get() const { return m_handle; }

private:
    ServiceManagerHandle m_handle = nullptr;
};

} // namespace

TEST_P(EscapeUnitNameTest, EscapesAsSystemdDoes)
{
    EXPECT_EQ(GetParam().escaped, EscapeUnitName(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Names, EscapeUnitNameTest,
    testing::Values(SEscape{"Plain", "kestrix", "kestrix"},
                    SEscape{"Blank", "Kestrix Services", "Kestrix\\x20Services"},
                    SEscape{"LeadingDot", ".hidden", "\\x2ehidden"}, SEscape{"InnerDot", "a.b.", "a.b."},
                    SEscape{"Dash", "a-b", "a\\x2db"}, SEscape{"Slash", "a/b", "a-b"}, SEscape{"OnlySlash", "/", "-"},
                    SEscape{"Umlaut", "Prüfdienst", "Pr\\xc3\\xbcfdienst"}, SEscape{"At", "a@b", "a\\x40b"},
                    SEscape{"Backslash", "a\\b", "a\\x5cb"}, SEscape{"ColonAndUnderscore", "x:y_z", "x:y_z"},
                    SEscape{"Dots", "..,", "\\x2e.\\x2c"}, SEscape{"Digits", "0aZ9", "0aZ9"}, SEscape{"Empty", "", ""}),
    [](const auto & test) { return std::string(test.param.name); });

TEST(ServiceUnitNameTest, HasTheSuffixAndItsLimit)
{
    EXPECT_EQ("Kestrix\\x20Services.service", ServiceUnitName("Kestrix Services"));
    EXPECT_EQ("", ServiceUnitName(""));
    EXPECT_EQ("", ServiceUnitName(nullptr));
    EXPECT_EQ(255u, ServiceUnitName(std::string(247, 'a').c_str()).size());
    EXPECT_EQ("", ServiceUnitName(std::string(248, 'a').c_str()));
}

TEST(SystemdServicesTest, TheOwnUnitPathAloneIsLookedAt)
{
    g_systemdRuns = true; // no matter where the variable is set
    const CTempDirectory first;
    const CTempDirectory second;
    second.Write("Kestrix\\x20Services.service", "[Service]\nExecStart=/bin/true\n");
    const CScopedVariable path("SYSTEMD_UNIT_PATH", ":" + first.File("") + "::" + second.File("") + ":");
    CManager manager;
    std::string config;
    EXPECT_EQ(Success, manager.Query("Kestrix Services", &config));
    EXPECT_EQ("[Service]\nExecStart=/bin/true\n", config);
    EXPECT_EQ(ErrorNotFound(), manager.Query("Kestrix Service"));
    EXPECT_EQ(ErrorNotFound(), manager.Query("dbus"));
    EXPECT_NE(Success, manager.Query(""));
    EXPECT_NE(Success, manager.Query(std::string(300, 'x').c_str()));
    g_systemdRuns = false;
}

TEST(SystemdServicesTest, AnEmptyUnitPathHoldsNoService)
{
    const CScopedVariable path("SYSTEMD_UNIT_PATH", "");
    CManager manager;
    EXPECT_EQ(ErrorNotFound(), manager.Query("dbus"));
}

TEST(SystemdServicesTest, AMaskedUnitDoesntExistThoughALaterDirectoryHasIt)
{
    const CTempDirectory first;
    const CTempDirectory second;
    for (char const * const unit : {"linked.service", "empty.service", "dangling.service"})
        second.Write(unit, "[Service]\n");
    std::filesystem::create_symlink("/dev/null", first.File("linked.service"));
    std::filesystem::create_symlink("/no/such/file", first.File("dangling.service"));
    first.Write("empty.service", "");
    std::filesystem::create_symlink(second.File("linked.service"), first.File("alias.service"));
    const CScopedVariable path("SYSTEMD_UNIT_PATH", first.File("") + ":" + second.File(""));
    CManager manager;
    EXPECT_EQ(ErrorNotFound(), manager.Query("linked"));
    EXPECT_EQ(ErrorNotFound(), manager.Query("empty"));
    EXPECT_EQ(ErrorNotFound(), manager.Query("dangling"));
    EXPECT_EQ(Success, manager.Query("alias"));
}

TEST(SystemdServicesTest, AConfigurationThatDoesntFitTellsItsSize)
{
    const CTempDirectory directory;
    directory.Write("big.service", std::string(2000, '#'));
    const CScopedVariable path("SYSTEMD_UNIT_PATH", directory.File(""));
    const CManager manager;
    ServiceHandle service = nullptr;
    ASSERT_EQ(Success, OpenService(manager.Get(), "big", service));
    std::vector<char> buffer(2001, 'x');
    std::uint32_t needed = 0;
    EXPECT_EQ(ErrorInsufficientBuffer(), QueryServiceConfig(service, buffer.data(), 2000, needed));
    EXPECT_EQ(2001u, needed);
    EXPECT_EQ('x', buffer[0]);
    EXPECT_EQ(Success, QueryServiceConfig(service, buffer.data(), needed, needed));
    EXPECT_EQ(std::string(2000, '#'), buffer.data());
    std::filesystem::remove(directory.File("big.service"));
    EXPECT_EQ(ErrorNotFound(), QueryServiceConfig(service, buffer.data(), 2001, needed));
    CloseService(service);
}

TEST(SystemdServicesTest, WithoutSystemdTheStandardPathIsSearched)
{
    const CScopedVariable path("SYSTEMD_UNIT_PATH", std::nullopt);
    CManager manager;
    std::string config;
    EXPECT_EQ(Success, manager.Query(StandardService, &config));
    EXPECT_NE("", config);
    EXPECT_EQ(ErrorNotFound(), manager.Query("no such service anywhere"));
}

namespace {

/// A system bus with a systemd behind it, for one connection. It knows the units that the test gives it.
class CFakeBus {
public:
    struct SUnit {
        std::string loadState, fragment;
    };

    enum class Manner : std::uint8_t {
        Answers,
        Silent, ///< takes the connection and says nothing
        Refuses ///< lets nobody ask systemd
    };

    CFakeBus(std::map<std::string, SUnit> units, Manner manner)
        : m_units(std::move(units)), m_manner(manner), m_listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, m_directory.File("bus").c_str());
        EXPECT_EQ(0, ::bind(m_listener, reinterpret_cast<sockaddr *>(&address), sizeof address));
        EXPECT_EQ(0, ::listen(m_listener, 4));
        if (manner != Manner::Silent) m_thread = std::thread([this] { Serve(); });
    }
    ~CFakeBus()
    {
        m_stop = true;
        if (m_thread.joinable()) m_thread.join();
        ::close(m_listener);
    }
    std::string Address() const { return "unix:path=" + m_directory.File("bus"); }

private:
    void Serve()
    {
        int connection = -1;
        while (!m_stop && connection == -1) {
            pollfd waiting{m_listener, POLLIN, 0};
            if (::poll(&waiting, 1, 10) > 0) connection = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        }
        if (connection == -1) return;
        sd_bus * bus = nullptr;
        ::sd_bus_new(&bus);
        ::sd_bus_set_fd(bus, connection, connection);
        ::sd_bus_set_server(bus, 1, SD_ID128_MAKE(01, 02, 03, 04, 05, 06, 07, 08, 09, 10, 11, 12, 13, 14, 15, 16));
        ::sd_bus_set_anonymous(bus, 1);
        ::sd_bus_add_filter(bus, nullptr, &CFakeBus::Answer, this);
        ::sd_bus_start(bus);
        while (!m_stop) {
            const int progress = ::sd_bus_process(bus, nullptr);
            if (progress < 0) break;
            if (progress == 0) ::sd_bus_wait(bus, 10000);
        }
        ::sd_bus_close(bus);
        ::sd_bus_unref(bus);
    }

    static int Answer(sd_bus_message * message, void * self, sd_bus_error *)
    {
        return static_cast<CFakeBus *>(self)->Answer(message);
    }

    int Answer(sd_bus_message * message)
    {
        char const * text = nullptr;
        if (::sd_bus_message_is_method_call(message, nullptr, "Hello") > 0)
            return ::sd_bus_reply_method_return(message, "s", ":1.1");
        if (m_manner == Manner::Refuses) return ::sd_bus_reply_method_errno(message, EACCES, nullptr);
        if (::sd_bus_message_is_method_call(message, "org.freedesktop.systemd1.Manager", "LoadUnit") > 0) {
            ::sd_bus_message_read(message, "s", &text);
            m_asked = text;
            return ::sd_bus_reply_method_return(message, "o", "/org/freedesktop/systemd1/unit/asked");
        }
        char const * property = nullptr;
        if (::sd_bus_message_is_method_call(message, "org.freedesktop.DBus.Properties", "Get") <= 0) return 0;
        ::sd_bus_message_read(message, "ss", &text, &property);
        const auto unit = m_units.find(m_asked);
        const bool known = unit != m_units.end();
        std::string value = "inactive";
        if (std::strcmp(property, "LoadState") == 0) value = known ? unit->second.loadState : "not-found";
        if (std::strcmp(property, "FragmentPath") == 0) value = known ? unit->second.fragment : "";
        return ::sd_bus_reply_method_return(message, "v", "s", value.c_str());
    }

    CTempDirectory m_directory;
    std::map<std::string, SUnit> m_units;
    const Manner m_manner;
    int m_listener;
    std::string m_asked; ///< of the serving thread
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

class ServicesOnTheBusTest : public testing::Test {
protected:
    ServicesOnTheBusTest() { g_systemdRuns = true; }
    ~ServicesOnTheBusTest() override { g_systemdRuns = false; }
    CScopedVariable m_noPath{"SYSTEMD_UNIT_PATH", std::nullopt};
};

} // namespace

TEST_F(ServicesOnTheBusTest, SystemdIsAskedWhereItRuns)
{
    const CTempDirectory directory;
    const std::string fragment = directory.Write("x.service", "[Unit]\n");
    CFakeBus bus({{"Kestrix\\x20Services.service", {"loaded", fragment}},
                  {"generated.service", {"loaded", ""}},
                  {"masked.service", {"masked", ""}}},
                 CFakeBus::Manner::Answers);
    const CScopedVariable address("DBUS_SYSTEM_BUS_ADDRESS", bus.Address());
    CManager manager;
    std::string config;
    EXPECT_EQ(Success, manager.Query("Kestrix Services", &config));
    EXPECT_EQ("[Unit]\n", config);
    EXPECT_EQ(Success, manager.Query("generated", &config));
    EXPECT_EQ("", config);
    EXPECT_EQ(ErrorNotFound(), manager.Query("masked"));
    EXPECT_EQ(ErrorNotFound(), manager.Query("unknown"));
}

TEST_F(ServicesOnTheBusTest, ABusThatIsNotThereIsPassedOver)
{
    const CScopedVariable address("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/no/such/bus");
    CManager manager;
    EXPECT_EQ(Success, manager.Query(StandardService));
    EXPECT_EQ(ErrorNotFound(), manager.Query("no such service anywhere"));
}

TEST_F(ServicesOnTheBusTest, ABusThatNeverAnswersIsGivenUp)
{
    const CFakeBus bus({}, CFakeBus::Manner::Silent);
    const CScopedVariable address("DBUS_SYSTEM_BUS_ADDRESS", bus.Address());
    CManager manager; // would hang here
    EXPECT_EQ(Success, manager.Query(StandardService));
    EXPECT_EQ(ErrorNotFound(), manager.Query("no such service anywhere"));
}

TEST_F(ServicesOnTheBusTest, WhereSystemdMayNotBeAskedTheStandardPathIsSearched)
{
    const CFakeBus bus({{"fstrim.service", {"loaded", ""}}}, CFakeBus::Manner::Refuses);
    const CScopedVariable address("DBUS_SYSTEM_BUS_ADDRESS", bus.Address());
    CManager manager;
    std::string config;
    EXPECT_EQ(Success, manager.Query(StandardService, &config));
    EXPECT_NE("", config); // of the unit's file
    EXPECT_EQ(ErrorNotFound(), manager.Query("no such service anywhere"));
}

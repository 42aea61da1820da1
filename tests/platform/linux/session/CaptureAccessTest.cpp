#include "platform/linux/pipewire/CaptureAccess.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pipewire/pipewire.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "tests/fakes/ScopedVariable.h"
#include "tests/platform/linux/pipewire/harness/Client.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/KeptLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Waiting.h"

namespace {

int initialisations = 0;
int connections = 0;

}  // namespace

// In front of the library's own, for all that is linked into this program.
extern "C" void pw_init(int* count, char*** arguments) {
  ++initialisations;
  reinterpret_cast<decltype(&pw_init)>(dlsym(RTLD_NEXT, "pw_init"))(count, arguments);
}

extern "C" pw_core* pw_context_connect(pw_context* context, pw_properties* properties,
                                       std::size_t userDataSize) {
  ++connections;
  return reinterpret_cast<decltype(&pw_context_connect)>(dlsym(RTLD_NEXT, "pw_context_connect"))(
      context, properties, userDataSize);
}

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* linkFactory = "{ name = libpipewire-module-link-factory }";

/// The user without any rights, if this process has them all.
class Nobody {
 public:
  Nobody() {
    constexpr uid_t nobody = 65534;
    if (geteuid() == 0 && seteuid(nobody) != 0) {
      ADD_FAILURE() << "cannot become nobody";
    }
  }
  ~Nobody() {
    if (getuid() != geteuid() && seteuid(getuid()) != 0) {
      ADD_FAILURE() << "cannot become root again";
    }
  }
  Nobody(const Nobody&) = delete;
  Nobody& operator=(const Nobody&) = delete;
};

/// 1.x ignores the lists of programs: there a session manager decides who comes to which socket.
bool hasLists() {
  return std::string_view(pw_get_library_version()).starts_with("0.");
}

std::string_view text(const spa_dict* properties, const char* key) {
  const char* value = properties != nullptr ? spa_dict_lookup(properties, key) : nullptr;
  return value != nullptr ? value : "";
}

/// A program that may do everything to others.
class Manager {
 public:
  /// Told on the manager's own thread.
  using Added =
      std::function<void(std::uint32_t id, std::string_view type, const spa_dict* properties)>;

  Manager(const std::string& socket, Added added) : added_(std::move(added)), client_(socket) {
    const pwtest::Locked lock(client_.loop());
    registry_ = pw_core_get_registry(client_.core(), PW_VERSION_REGISTRY, 0);
    pw_registry_add_listener(registry_, &hook_, &registryEvents, this);
  }
  ~Manager() {
    client_.stop();
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
  }
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;

  /// Waits until the server has done what it was told. Not on the manager's own thread.
  void roundTrip() { client_.roundTrip(); }

  void reject(std::uint32_t program) {
    withProgram(program,
                [](pw_client* proxy) { pw_client_error(proxy, PW_ID_CORE, -EACCES, "rejected"); });
  }

  void hide(std::uint32_t object, std::uint32_t fromProgram) {
    withProgram(fromProgram, [object](pw_client* proxy) {
      const pw_permission none{.id = object, .permissions = 0};
      pw_client_update_permissions(proxy, 1, &none);
    });
  }

 private:
  template <typename Act>
  void withProgram(std::uint32_t id, Act act) {
    const pwtest::Locked lock(client_.loop());
    auto* proxy = static_cast<pw_client*>(
        pw_registry_bind(registry_, id, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT, 0));
    act(proxy);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(proxy));
  }

  static const pw_registry_events registryEvents;

  Added added_;
  pwtest::Client client_;
  pw_registry* registry_ = nullptr;
  spa_hook hook_{};
};

const pw_registry_events Manager::registryEvents = {
    .version = PW_VERSION_REGISTRY_EVENTS,
    .global =
        [](void* self, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
           const spa_dict* properties) {
          static_cast<const Manager*>(self)->added_(id, type, properties);
        },
    .global_remove = nullptr,
};

class LinuxCaptureAccess : public testing::Test {
 protected:
  /// The name by which the server's lists know this process.
  static std::string ownName() {
    std::ifstream stream("/proc/self/cmdline");
    std::string name;
    std::getline(stream, name, '\0');
    return name;
  }

  /// The settings of a server that lets this process wait for a permission.
  static std::string restriction() {
    return hasLists()
               ? "access.restricted = [ \"" + ownName() + "\" ]"
               : "access.socket = { pipewire-0 = restricted pipewire-0-manager = unrestricted }";
  }

  /// A server with those settings of its access module and those other modules, which listens.
  void startServer(const std::string& access, const std::string& others) {
    std::ofstream(folder.path() / "pipewire.conf")
        << "context.properties = { core.daemon = true core.name = pipewire-0 support.dbus = false "
           "}\ncontext.spa-libs = { support.* = support/libspa-support }\n"
           "context.modules = [ { name = libpipewire-module-protocol-native }\n"
           "{ name = libpipewire-module-access args = { "
        << access << " } }\n"
        << others << " ]\n";
    const std::string path = folder.path().string();
    server = support::ChildProcess::start({.arguments = {"pipewire", "-c", "pipewire.conf"},
                                           .environment = {{"PIPEWIRE_CONFIG_DIR", path},
                                                           {"PIPEWIRE_RUNTIME_DIR", path},
                                                           {"XDG_RUNTIME_DIR", path}},
                                           .showsErrors = false});
    ASSERT_NE(server, nullptr);
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!std::filesystem::is_socket(socket()) && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(5ms);
    }
    ASSERT_TRUE(std::filesystem::is_socket(socket()));
    connection_.useServer(socket());
  }

  std::string socket() const { return folder.path() / "pipewire-0"; }
  std::string managersSocket() const { return socket() + "-manager"; }

  void expectRefusal(const std::string& reason) {
    EXPECT_FALSE(access_.preflightScreenCaptureAccess());
    EXPECT_THAT(log.lines(),
                ElementsAre("error: The audio server refuses to be captured — " + reason));
  }

  support::TemporaryFolder folder;
  std::unique_ptr<support::ChildProcess> server;
  support::KeptLog log;
  Connection connection_;
  CaptureAccess access_{connection_, log};
};

TEST_F(LinuxCaptureAccess, isGrantedByAServerThatLetsThisProgramLink) {
  startServer("", linkFactory);
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
  EXPECT_TRUE(access_.requestScreenCaptureAccess());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(LinuxCaptureAccess, isGrantedWhereThereIsNoServer) {
  connection_.useServer(socket());
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
  EXPECT_TRUE(access_.requestScreenCaptureAccess());
}

TEST_F(LinuxCaptureAccess, isGrantedWhereNothingIsKnownAboutTheServer) {
  startServer("", linkFactory);
  kill(server->pid(), SIGSTOP);
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
}

TEST_F(LinuxCaptureAccess, isGrantedWhereAServerThatWasFoundAgainHangs) {
  startServer("", linkFactory);
  {
    const LoopLock lock(connection_.loop());
    connection_.retainConnection();
    ASSERT_TRUE(connection_.ensureConnected());
  }
  server->end(SIGKILL);
  std::filesystem::remove(socket());
  startServer("", linkFactory);
  ASSERT_TRUE(support::waitFor([this] {
    const LoopLock lock(connection_.loop());
    return connection_.graph().linkFactoryId != unknownGlobal;
  })) << "looked for by the connection alone";
  {
    Connection later;  // when it has its answers, the other has too
    later.useServer(socket());
    const LoopLock lock(later.loop());
    ASSERT_TRUE(later.ensureConnected() && later.roundTrip());
  }
  kill(server->pid(), SIGSTOP);
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(LinuxCaptureAccess, isGrantedWhereTheServerThatFollowsAnotherHangs) {
  startServer("", linkFactory);
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
  server->end(SIGKILL);
  std::filesystem::remove(socket());
  startServer("", linkFactory);
  kill(server->pid(), SIGSTOP);
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
}

TEST_F(LinuxCaptureAccess, isGrantedWhereTheServerDiesAfterItsGreeting) {
  startServer(restriction(), linkFactory);
  auto granted =
      std::async(std::launch::async, [this] { return access_.preflightScreenCaptureAccess(); });
  std::this_thread::sleep_for(300ms);
  server->end(SIGKILL);
  EXPECT_TRUE(granted.get()) << "nobody can give a permission any more";
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(LinuxCaptureAccess, isGrantedWhereTheLibraryLacksItsConfiguration) {
  startServer("", linkFactory);
  const support::TemporaryFolder empty;
  const fakes::ScopedVariable lost("PIPEWIRE_CONFIG_DIR", empty.path().c_str());
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
}

TEST_F(LinuxCaptureAccess, asksAgainOnTheConnectionThatIsThere) {
  startServer("", linkFactory);
  connections = 0;
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
  EXPECT_TRUE(access_.requestScreenCaptureAccess());
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
  EXPECT_EQ(connections, 1);
  EXPECT_EQ(initialisations, 1);
}

TEST_F(LinuxCaptureAccess, isGrantedByTheServerThatComesAfterOneThatRefused) {
  startServer(restriction(), linkFactory);
  EXPECT_FALSE(access_.preflightScreenCaptureAccess());
  server->end(SIGKILL);
  std::filesystem::remove(socket());
  startServer("", linkFactory);
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
}

TEST_F(LinuxCaptureAccess, isRefusedByAServerThatRejectsThisProgram) {
  std::unique_ptr<Manager> manager;
  if (hasLists()) {
    startServer("access.rejected = [ \"" + ownName() + "\" ]", linkFactory);
  } else {
    startServer(restriction(), linkFactory);
    // A session manager of 1.x, at a socket where others wait for it.
    ASSERT_TRUE(support::waitFor([this] { return std::filesystem::is_socket(managersSocket()); }));
    manager = std::make_unique<Manager>(
        managersSocket(), [&](std::uint32_t id, std::string_view, const spa_dict* properties) {
          if (text(properties, PW_KEY_ACCESS) == "restricted") {
            manager->reject(id);
          }
        });
  }
  expectRefusal("it rejects this program");
  EXPECT_FALSE(access_.requestScreenCaptureAccess());
}

TEST_F(LinuxCaptureAccess, isRefusedWhileNobodyGivesThePermission) {
  startServer(restriction(), linkFactory);
  expectRefusal("it waits for a permission that its session manager has not given");
}

TEST_F(LinuxCaptureAccess, isRefusedByAServerThatShowsNoLinks) {
  startServer("", "");
  expectRefusal("it does not let this program link to streams");
}

TEST_F(LinuxCaptureAccess, isRefusedOnceThePermissionToLinkIsTakenBack) {
  startServer("", linkFactory);
  std::atomic<std::uint32_t> factory = 0;
  std::atomic<std::uint32_t> lastProgram = 0;
  std::atomic<int> programs = 0;
  Manager manager(
      socket(), [&](std::uint32_t id, std::string_view type, const spa_dict* properties) {
        if (type == PW_TYPE_INTERFACE_Client) {
          lastProgram = id;
          ++programs;
        } else if (text(properties, PW_KEY_FACTORY_TYPE_NAME) == PW_TYPE_INTERFACE_Link) {
          factory = id;
        }
      });
  ASSERT_TRUE(support::waitFor([&] { return programs == 1; })) << "the manager itself";
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
  ASSERT_TRUE(support::waitFor([&] { return programs == 2; }));
  manager.hide(factory, lastProgram);
  EXPECT_TRUE(support::waitFor([&] { return !access_.preflightScreenCaptureAccess(); }));
  EXPECT_THAT(log.lines(),
              ElementsAre("error: The audio server refuses to be captured — it does not let this "
                          "program link to streams"));
}

TEST_F(LinuxCaptureAccess, staysGrantedWhenASingleCallIsDenied) {
  startServer("", linkFactory);
  std::atomic<std::uint32_t> lastProgram = 0;
  std::atomic<int> programs = 0;
  Manager manager(socket(), [&](std::uint32_t id, std::string_view type, const spa_dict*) {
    if (type == PW_TYPE_INTERFACE_Client) {
      lastProgram = id;
      ++programs;
    }
  });
  ASSERT_TRUE(support::waitFor([&] { return programs == 1; })) << "the manager itself";
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
  ASSERT_TRUE(support::waitFor([&] { return programs == 2; }));
  connections = 0;
  manager.reject(lastProgram);
  manager.roundTrip();
  EXPECT_TRUE(access_.preflightScreenCaptureAccess());
  EXPECT_EQ(connections, 0) << "the one that is there lasts";
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(LinuxCaptureAccess, isRefusedByAnotherUsersServerHoweverItIsNamed) {
  startServer("", linkFactory);
  ASSERT_EQ(chmod(socket().c_str(), 0), 0);
  for (const std::string& remote : {socket(), std::string()}) {
    const fakes::ScopedVariable variable("PIPEWIRE_RUNTIME_DIR", folder.path().c_str());
    connection_.useServer(remote);
    const Nobody nobody;
    EXPECT_FALSE(access_.preflightScreenCaptureAccess());
    EXPECT_EQ(log.lines().back(),
              "error: The audio server refuses to be captured — it is another user's");
    EXPECT_EQ(connection_.failure(), "PipeWire refuses this user at " + socket() +
                                         ": run the program as the user of the desktop session.");
  }
}

TEST_F(LinuxCaptureAccess, isNotRefusedWhereTheSessionsFolderIsUnknownWhichIsSaid) {
  for (const auto& [runtime, problem] :
       {std::pair("", "set"), std::pair("run", "an absolute path")}) {
    const fakes::ScopedVariable variable("PIPEWIRE_RUNTIME_DIR", "");
    const fakes::ScopedVariable session("XDG_RUNTIME_DIR", runtime);
    EXPECT_TRUE(access_.preflightScreenCaptureAccess());
    EXPECT_EQ(
        connection_.failure(),
        "PipeWire was not found because XDG_RUNTIME_DIR is not " + std::string(problem) +
            ": run the program in the user's session, or set XDG_RUNTIME_DIR to the session's "
            "folder.");
  }
}

}  // namespace
}  // namespace audrel::linuxos

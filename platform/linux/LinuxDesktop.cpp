#include "platform/linux/LinuxDesktop.h"

#include "platform/Identity.h"
#include "platform/Selectors.h"
#include "platform/linux/session/AlertHelper.h"
#include "platform/linux/session/PassingNotification.h"
#include "platform/linux/system/ProgramFolder.h"
#include "platform/linux/tray/IconTheme.h"

namespace audrel::linuxos {

namespace {

const NS::Selector toggle(selectors::toggleRecording);
const NS::Selector refreshProcessList(selectors::refreshProcessList);
const NS::Selector selectFormatM4A(selectors::selectFormatM4A);

/// Whether what can be started from the menu is an M4A.
bool offersM4A(const MenuTree& menu) {
  bool isOffered = false;
  menu.forEach([&](const MenuNode& node) {
    isOffered = isOffered || (node.item != nullptr && node.item->action() == selectFormatM4A &&
                              node.item->state() == NS::ControlState::on);
  });
  return isOffered;
}

}  // namespace

LinuxDesktop::LinuxDesktop(CaptureHardware& hardware, AudioFramework& audioFramework,
                           Healing& healing, NS::FileManager& fileManager, os::Log& log)
    : hardware_(hardware),
      audioFramework_(audioFramework),
      healing_(healing),
      logger_(log.makeLogger(identity::bundleIdentifier, "desktop")),
      bus_(log.makeLogger(identity::bundleIdentifier, "statusitem")),
      notifier_(bus_, logger_),
      workspace_(bus_, notifier_),
      userDefaults_(userDefaultsFile(fileManager.homeDirectoryForCurrentUser()), logger_),
      updates_([this] { return makeAlert(); }),
      appKit_({.application = application_,
               .bus = bus_,
               .workspace = workspace_,
               .makeAlert = [this] { return makeAlert(); },
               .observers = {
                   .menuOpened = [this](const MenuTree& menu) { menuOpened(menu); },
                   .menuSet =
                       [this](const MenuTree& menu) { announcer_.setMenu(recordingMenuOf(menu)); },
                   .panelChanged = [this](bool isThere) { panelChanged(isThere); }},
               .icons = IconTheme::ofProgramIn(programFolder()),
               .log = log}),
      service_(application_, bus_, notifier_, logger_),
      announcer_(notifier_, announcerControls()),
      logout_(application_, bus_) {
  const NoticeTaker taker = [this](const Notice& notice) { notices_.take(notice); };
  hardware_.setNoticeTaker(taker);
  audioFramework_.setNoticeTaker(taker);
  healing_.setNoticeTaker(taker);
}

LinuxDesktop::~LinuxDesktop() {
  healing_.end();
  hardware_.setNoticeTaker(nullptr);
  audioFramework_.setNoticeTaker(nullptr);
}

bool LinuxDesktop::claimSession() {
  if (service_.claim() == ApplicationService::Claim::runsAlready) {
    return false;
  }
  service_.setCommands(commands_);
  return true;
}

void LinuxDesktop::tellOfSlowSaving(const std::stop_token& stop) const {
  const Notice notice = slowSavingNotice();
  logger_->info(notice.summary + ": " + notice.body);
  showUntilStopped(bus_.connection(), notice, stop);
}

Desktop LinuxDesktop::interfaces() {
  return {.appKit = appKit_,
          .runLoop = runLoop_,
          .urlParser = urlParser_,
          .userDefaults = userDefaults_,
          .updateFramework = updates_};
}

std::unique_ptr<NS::Alert> LinuxDesktop::makeAlert() {
  return std::make_unique<Alert>(
      AlertParts{.application = application_,
                 .diagnostics = hardware_,
                 .whyNoServer = [this] { return hardware_.whyNoServer(); },
                 .notifier = notifier_,
                 .helper = alertHelperProgram(),
                 .logger = logger_});
}

/// Starts and stops wait their turn with the launcher's commands.
Announcer::Controls LinuxDesktop::announcerControls() {
  return {.startRecording = [this] { service_.activateAction("start-recording"); },
          .stopRecording = [this] { service_.activateAction("stop-recording"); },
          .refreshSources = [this] { appKit_.chooseMenuItem(refreshProcessList); },
          .chooseSource = [this](const auto& source) { appKit_.chooseMenuItem(source); }};
}

/// The next click is likely to be "Start Recording".
void LinuxDesktop::menuOpened(const MenuTree& menu) {
  if (offersM4A(menu)) {
    aacPreload_.begin();
  }
}

/// The icon comes first: what an earlier process left can wait.
void LinuxDesktop::panelChanged(bool isThere) {
  announcer_.setPanel(isThere);
  if (isThere) {
    healing_.begin();
  }
}

void LinuxDesktop::Commands::startRecording() {
  if (!desktop_.hardware_.isRunning()) {
    desktop_.appKit_.chooseMenuItem(toggle);
  }
}

void LinuxDesktop::Commands::stopRecording() {
  if (desktop_.hardware_.isRunning()) {
    desktop_.appKit_.chooseMenuItem(toggle);
  }
}

void LinuxDesktop::Commands::toggleRecording() {
  desktop_.appKit_.chooseMenuItem(toggle);
}

void LinuxDesktop::Commands::quit() {
  desktop_.application_.terminate();
}

void LinuxDesktop::Commands::activate() {
  desktop_.announcer_.tell();
}

}  // namespace audrel::linuxos

#include "platform/linux/tray/RecordingMenu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Selectors.h"

namespace audrel::linuxos {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::shared_ptr<MenuItem> item(const std::string& title, const char* action = nullptr) {
  return std::make_shared<MenuItem>(
      MenuItem::Kind::command, title,
      action == nullptr ? std::nullopt : std::optional(NS::Selector(action)));
}

RecordingMenu read(const Menu& menu) {
  std::int32_t nextId = 1;
  return recordingMenuOf(MenuTree(menu, nextId, [](const MenuItem&) { return true; }));
}

std::vector<std::string> titlesOf(const std::vector<std::shared_ptr<MenuItem>>& items) {
  std::vector<std::string> titles;
  for (const auto& each : items) {
    titles.push_back(each->title());
  }
  return titles;
}

TEST(RecordingMenu, hasTheSourcesWhereverTheyStand) {
  const auto submenu = std::make_shared<Menu>();
  submenu->addItem(item("All System Audio", selectors::selectAllSystemAudio));
  submenu->addItem(item("Recording from: myself", selectors::selectProcess));
  submenu->addItem(item("Refresh List", selectors::refreshProcessList));
  const auto sources = item("Record from");
  sources->setSubmenu(submenu);
  Menu menu;
  menu.addItem(item("Start Recording", selectors::toggleRecording));
  menu.addItem(sources);
  const RecordingMenu idle = read(menu);
  EXPECT_EQ(idle.recorded, std::nullopt);
  EXPECT_THAT(titlesOf(idle.sources), ElementsAre("All System Audio", "Recording from: myself"));
}

TEST(RecordingMenu, tellsWhatIsRecorded) {
  Menu menu;
  menu.addItem(item("Recording from: Web Radio"));
  menu.addItem(item("Stop Recording", selectors::toggleRecording));
  const RecordingMenu recording = read(menu);
  EXPECT_EQ(recording.recorded, "Web Radio");
  EXPECT_THAT(recording.sources, IsEmpty());
}

}  // namespace
}  // namespace audrel::linuxos

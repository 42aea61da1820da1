#include "platform/linux/session/Announcer.h"

#include <algorithm>
#include <utility>

namespace audrel::linuxos {

namespace {

constexpr const char* tag = "program";

/// So many buttons every desktop shows.
constexpr std::size_t mostActions = 3;

std::string timeOfDay() {
  const std::unique_ptr<GDateTime, Releaser<g_date_time_unref>> now(g_date_time_new_now_local());
  return StringHandle(g_date_time_format(now.get(), "%H:%M")).get();
}

}  // namespace

Announcer::Announcer(Notifier& notifier, Controls controls)
    : notifier_(notifier), controls_(std::move(controls)) {}

Announcer::~Announcer() {
  notifier_.withdraw(tag);
}

void Announcer::setPanel(bool isThere) {
  const Panel before = std::exchange(panel_, isThere ? Panel::there : Panel::none);
  if (before == panel_) {
    return;
  }
  if (!isThere && (recording_ || !isIntroduced_)) {
    tell();
  } else if (isThere || before == Panel::there) {
    notifier_.withdraw(tag);  // it says where to go, and that is another place now
  }
}

void Announcer::setMenu(RecordingMenu menu) {
  const std::string chosenBefore = chosenSource();
  sources_ = std::move(menu.sources);
  const bool wasRecording = recording_.has_value();
  if (menu.recorded.has_value() == wasRecording) {
    // During a recording the caption tells what was chosen for the next one.
    if (chosenSource() != chosenBefore) {
      notifier_.withdraw(tag);
    }
    return;
  }
  if (menu.recorded) {
    recording_ = Recording{.source = std::move(*menu.recorded), .since = timeOfDay()};
  } else {
    recording_.reset();
  }
  if (recording_ && panel_ == Panel::none) {
    tell();
  } else {
    notifier_.withdraw(tag);
  }
}

void Announcer::tell() {
  if (recording_) {
    tellRecording();
  } else {
    tellIdle();
  }
}

void Announcer::tellRecording() {
  show("Audrel is recording",
       recording_->source + ", since " + recording_->since + ". " + whereToGo(),
       {{.key = "stop", .label = "Stop Recording", .perform = controls_.stopRecording}});
}

void Announcer::tellIdle() {
  isIntroduced_ = true;
  const std::string source = chosenSource();
  show("Audrel is running",
       (source.empty() ? "" : "Ready to record " + source + ". ") + whereToGo(),
       {{.key = "start", .label = "Start Recording", .perform = controls_.startRecording},
        {.key = "choose", .label = "Choose Source…", .perform = [this] {
           controls_.refreshSources();
           offerSources(0);
         }}});
}

void Announcer::offerSources(std::size_t first) {
  if (sources_.empty()) {
    tell();  // a recording has begun meanwhile
    return;
  }
  const bool fitsAll = sources_.size() <= mostActions;
  first = fitsAll || first >= sources_.size() ? 0 : first;
  const std::size_t end = std::min(sources_.size(), first + mostActions - (fitsAll ? 0 : 1));
  Notification::Actions actions;
  for (std::size_t i = first; i < end; ++i) {
    actions.push_back({.key = "source-" + std::to_string(i),
                       .label = sources_[i]->title(),
                       .perform = [this, source = sources_[i]] {
                         controls_.chooseSource(source);
                         tell();
                       }});
  }
  if (!fitsAll) {
    actions.push_back(
        {.key = "more", .label = "More…", .perform = [this, end] { offerSources(end); }});
  }
  const std::string source = chosenSource();
  show("What is to be recorded?", source.empty() ? "" : "Chosen: " + source + ".",
       std::move(actions));
}

/// Empty when it has gone.
std::string Announcer::chosenSource() const {
  const auto chosen = std::ranges::find_if(
      sources_, [](const auto& source) { return source->state() == NS::ControlState::on; });
  return chosen == sources_.end() ? "" : (*chosen)->title();
}

const char* Announcer::whereToGo() const {
  return panel_ == Panel::there ? "Its icon in the panel has the menu."
                                : "Its entry in the launcher starts and stops recordings.";
}

void Announcer::show(std::string summary, std::string body, Notification::Actions actions) {
  notifier_.notify({.summary = std::move(summary),
                    .body = std::move(body),
                    .tag = tag,
                    .actions = std::move(actions)});
}

}  // namespace audrel::linuxos

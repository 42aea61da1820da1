#pragma once

#include <sys/types.h>

#include <any>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Foundation.h"

/// What the program asks of AppKit. Main thread only.
///
/// Menus, items and images are shared objects; delegates and targets are referred to weakly. A
/// platform keeps a menu and a sender alive for the length of a call into the program, which may
/// replace both meanwhile.
namespace NS {

class Menu;
class MenuItem;

/// A message's name, such as "toggleRecording:".
class Selector {
 public:
  explicit Selector(std::string name) : name_(std::move(name)) {}
  const std::string& name() const { return name_; }

  bool operator==(const Selector&) const = default;

 private:
  std::string name_;
};

/// An object that actions are sent to.
class Target {
 public:
  virtual ~Target() = default;

  /// Performs the action named by `selector`. Ignores one that it does not know.
  virtual void perform(const Selector& selector, const std::shared_ptr<MenuItem>& sender) = 0;
};

// Application

enum class ActivationPolicy : std::int64_t { regular = 0, accessory = 1, prohibited = 2 };

class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;
  virtual void applicationDidFinishLaunching() = 0;
  virtual void applicationWillTerminate() = 0;
};

class Application {
 public:
  virtual ~Application() = default;
  virtual void setActivationPolicy(ActivationPolicy policy) = 0;
  virtual void setDelegate(const std::weak_ptr<ApplicationDelegate>& delegate) = 0;

  /// Runs the event loop until the application ends.
  virtual void run() = 0;

  /// Ends the application, also while an alert is up: its delegate is told first. May not return.
  virtual void terminate() = 0;
};

// Menus

class MenuDelegate {
 public:
  virtual ~MenuDelegate() = default;

  /// Just before the menu shows. The delegate may replace it.
  virtual void menuWillOpen(const std::shared_ptr<Menu>& menu) = 0;
};

enum class ControlState : std::int64_t { off = 0, on = 1 };

/// New: without target, enabled, off, without submenu.
class MenuItem {
 public:
  virtual ~MenuItem() = default;
  virtual void setTarget(const std::weak_ptr<Target>& target) = 0;
  virtual void setEnabled(bool isEnabled) = 0;
  virtual void setState(ControlState state) = 0;
  virtual void setSubmenu(std::shared_ptr<Menu> submenu) = 0;
  virtual void setRepresentedObject(std::any object) = 0;

  /// Empty when none was set.
  virtual const std::any& representedObject() const = 0;
};

class Menu {
 public:
  virtual ~Menu() = default;
  virtual void setAutoenablesItems(bool autoenables) = 0;
  virtual void addItem(std::shared_ptr<MenuItem> item) = 0;
  virtual void setDelegate(const std::weak_ptr<MenuDelegate>& delegate) = 0;
};

// Images, colours and fonts

struct Size {
  double width = 0;
  double height = 0;

  bool operator==(const Size&) const = default;
};

struct Rect {
  double x = 0;
  double y = 0;
  Size size;

  bool operator==(const Rect&) const = default;
};

/// `NSFontWeightRegular`.
inline constexpr double fontWeightRegular = 0;

struct SymbolConfiguration {
  double pointSize = 0;
  double weight = fontWeightRegular;

  bool operator==(const SymbolConfiguration&) const = default;
};

enum class CompositingOperation : std::uint64_t { sourceAtop = 5 };

class Image {
 public:
  virtual ~Image() = default;

  /// The image in that configuration; null when it has none.
  virtual std::shared_ptr<Image> withSymbolConfiguration(
      const SymbolConfiguration& configuration) = 0;
  virtual void setTemplate(bool isTemplate) = 0;
  virtual Size size() const = 0;

  /// Between these, drawing goes into this image.
  virtual void lockFocus() = 0;
  virtual void unlockFocus() = 0;

  /// Draws this image into the one that has the focus.
  virtual void drawInRect(const Rect& rect) = 0;
};

class Color {
 public:
  virtual ~Color() = default;

  /// Makes it the current colour of what has the focus.
  virtual void set() const = 0;
};

class Font {
 public:
  virtual ~Font() = default;
};

// Status item

enum class CellImagePosition : std::uint64_t { imageLeft = 2 };

/// `NSVariableStatusItemLength`: as wide as its content.
inline constexpr double variableStatusItemLength = -1;

class StatusBarButton {
 public:
  virtual ~StatusBarButton() = default;
  virtual void setFont(std::shared_ptr<Font> font) = 0;
  virtual void setImagePosition(CellImagePosition position) = 0;

  /// Null takes the image away.
  virtual void setImage(std::shared_ptr<Image> image) = 0;
  virtual void setTitle(const std::string& title) = 0;
};

class StatusItem {
 public:
  virtual ~StatusItem() = default;

  /// Owned by the item; null when it has none.
  virtual StatusBarButton* button() = 0;
  virtual void setMenu(std::shared_ptr<Menu> menu) = 0;
};

// Alerts

enum class AlertStyle : std::uint64_t { warning = 0, informational = 1, critical = 2 };

using ModalResponse = std::int64_t;
inline constexpr ModalResponse alertFirstButtonReturn = 1000;
inline constexpr ModalResponse alertSecondButtonReturn = 1001;

class Alert {
 public:
  virtual ~Alert() = default;
  virtual void setMessageText(const std::string& text) = 0;
  virtual void setInformativeText(const std::string& text) = 0;
  virtual void setAlertStyle(AlertStyle style) = 0;

  /// The first button is the default one.
  virtual void addButton(const std::string& title) = 0;

  /// Shows the alert, in front of other programs' windows where the system lets it, and waits for
  /// the answer.
  virtual ModalResponse runModal() = 0;
};

// Workspace and running applications

class Workspace {
 public:
  virtual ~Workspace() = default;
  virtual bool openURL(const URL& url) = 0;

  /// Shows the files in the file viewer, selected. Whether they exist is its matter.
  virtual void activateFileViewerSelecting(const std::vector<std::filesystem::path>& files) = 0;
};

struct RunningApplication {
  std::optional<std::string> localizedName;

  bool operator==(const RunningApplication&) const = default;
};

class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  /// `NSRunningApplication(processIdentifier:)`; nothing when no application has that pid.
  virtual std::optional<RunningApplication> runningApplication(pid_t processIdentifier) = 0;
};

/// Gives the shared objects and makes the others.
class AppKit {
 public:
  virtual ~AppKit() = default;

  virtual Application& sharedApplication() = 0;
  virtual Workspace& sharedWorkspace() = 0;

  /// `NSStatusBar.system.statusItem(withLength:)`.
  virtual std::shared_ptr<StatusItem> makeStatusItem(double length) = 0;

  virtual std::shared_ptr<Menu> makeMenu() = 0;

  /// `action` may be absent; `keyEquivalent` empty or one letter, with the Command modifier.
  virtual std::shared_ptr<MenuItem> makeMenuItem(const std::string& title,
                                                 const std::optional<Selector>& action,
                                                 const std::string& keyEquivalent) = 0;
  virtual std::shared_ptr<MenuItem> makeSeparatorItem() = 0;

  /// `imageWithSystemSymbolName:accessibilityDescription:`, without a description; null when there
  /// is no such symbol.
  virtual std::shared_ptr<Image> makeSystemSymbol(const std::string& name) = 0;

  /// An empty image, not a template.
  virtual std::shared_ptr<Image> makeImage(Size size) = 0;

  virtual std::shared_ptr<Color> systemRedColor() = 0;
  virtual std::shared_ptr<Color> systemOrangeColor() = 0;

  /// `NSRectFillUsingOperation`, with the current colour, in what has the focus.
  virtual void fillRect(const Rect& rect, CompositingOperation operation) = 0;

  virtual std::shared_ptr<Font> monospacedDigitSystemFont(double size, double weight) = 0;

  virtual std::unique_ptr<Alert> makeAlert() = 0;
};

}  // namespace NS

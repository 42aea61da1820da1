#include "platform/linux/alert/AlertWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "platform/linux/alert/ExitStatus.h"
#include "tests/platform/linux/session/harness/XServer.h"

namespace audrel::alerthelper {
namespace {

using testing::ElementsAre;

using PixbufHandle = std::unique_ptr<GdkPixbuf, linuxos::Releaser<g_object_unref>>;

/// A widget and all that is in it, in the order in which they show.
void collect(GtkWidget* widget, std::vector<GtkWidget*>& all) {
  all.push_back(widget);
  if (GTK_IS_CONTAINER(widget)) {
    GList* children = gtk_container_get_children(GTK_CONTAINER(widget));
    for (GList* child = children; child != nullptr; child = child->next) {
      collect(static_cast<GtkWidget*>(child->data), all);
    }
    g_list_free(children);
  }
}

class AlertWindow : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    static sessiontest::XServer xServer;
    ASSERT_EQ(gtk_init_check(nullptr, nullptr), TRUE);
  }

  void show(const std::string& style) {
    window = makeAlertWindow({.icon = iconOfStyle(style),
                              .message = "Message",
                              .informative = "Text & <more> caf\xE9",
                              .buttons = buttons});
    gtk_widget_show(window.get());
    widgets.clear();
    collect(window.get(), widgets);
  }

  /// What is read, icons by their names.
  std::vector<std::string> shown() const {
    std::vector<std::string> texts;
    for (GtkWidget* widget : widgets) {
      if (GTK_IS_BUTTON(widget)) {
        texts.push_back(std::string("[") + gtk_button_get_label(GTK_BUTTON(widget)) + "]");
      } else if (GTK_IS_IMAGE(widget)) {
        const char* name = nullptr;
        gtk_image_get_icon_name(GTK_IMAGE(widget), &name, nullptr);
        texts.emplace_back(name);
      } else if (GTK_IS_LABEL(widget) && !GTK_IS_BUTTON(gtk_widget_get_parent(widget))) {
        texts.emplace_back(gtk_label_get_text(GTK_LABEL(widget)));
      }
      EXPECT_EQ(gtk_widget_get_mapped(widget), gtk_widget_get_visible(widget));
    }
    return texts;
  }

  const std::vector<std::string> buttons = {"First", "Second"};
  DialogHandle window;
  std::vector<GtkWidget*> widgets;
};

TEST_F(AlertWindow, showsItsIconItsTextsAndItsButtonsInOrder) {
  show("warning");
  EXPECT_THAT(shown(), ElementsAre("dialog-warning", "Message", "Text & <more> caf\xEF\xBF\xBD",
                                   "[First]", "[Second]"));
  EXPECT_STREQ(gtk_window_get_title(GTK_WINDOW(window.get())), "Audrel");
}

TEST_F(AlertWindow, hasTheFirstButtonAsDefaultWithTheFocus) {
  show("informational");
  GtkWidget* focused = gtk_window_get_focus(GTK_WINDOW(window.get()));
  ASSERT_TRUE(GTK_IS_BUTTON(focused));
  EXPECT_STREQ(gtk_button_get_label(GTK_BUTTON(focused)), "First");
  EXPECT_EQ(gtk_window_get_default_widget(GTK_WINDOW(window.get())), focused);
}

constexpr int iconSize = 48;

std::string pixelsOf(const PixbufHandle& picture) {
  if (picture == nullptr) {
    return "";
  }
  const auto* bytes = reinterpret_cast<const char*>(gdk_pixbuf_read_pixels(picture.get()));
  return {bytes, gdk_pixbuf_get_byte_length(picture.get())};
}

/// The pixels of the icon that the theme has under that name.
std::string drawn(const char* name) {
  return pixelsOf(PixbufHandle(gtk_icon_theme_load_icon(
      gtk_icon_theme_get_default(), name, iconSize, GTK_ICON_LOOKUP_FORCE_SIZE, nullptr)));
}

TEST_F(AlertWindow, drawsThreeStylesThatDiffer) {
  std::set<std::string> pictures = {""};
  for (const char* style : {"informational", "warning", "critical"}) {
    show(style);
    pictures.insert(drawn(iconOfStyle(style)));
  }
  EXPECT_EQ(pictures.size(), 4U);
}

TEST_F(AlertWindow, hasTheProgramsIconWhereTheProgramSpeaksOfItself) {
  show("informational");
  EXPECT_EQ(shown().front(), "io.github.audrel.Audrel");
  const PixbufHandle ours(gdk_pixbuf_new_from_file(
      "packaging/linux/icons/hicolor/48x48/apps/io.github.audrel.Audrel.png", nullptr));
  ASSERT_NE(ours, nullptr);
  EXPECT_EQ(drawn("io.github.audrel.Audrel"), pixelsOf(ours));
}

TEST_F(AlertWindow, staysOnTheScreenWithALongText) {
  std::string text(500, 'a');
  for (int i = 0; i < 40; ++i) {
    text += " words that break";
  }
  window = makeAlertWindow(
      {.icon = "dialog-error", .message = "Message", .informative = text, .buttons = buttons});
  gtk_widget_show(window.get());
  int width = 0;
  int height = 0;
  gtk_window_get_size(GTK_WINDOW(window.get()), &width, &height);
  EXPECT_LE(width, 800);
  EXPECT_LE(height, 600);
}

TEST(AlertStyle, isOneOfThree) {
  EXPECT_EQ(iconOfStyle("dialog-warning"), nullptr);
  EXPECT_EQ(iconOfStyle(""), nullptr);
}

TEST(AlertExitStatus, hasRoomForAllButtonsBeforeTheOthers) {
  EXPECT_LE(firstButton + mostButtons, closed);
}

}  // namespace
}  // namespace audrel::alerthelper

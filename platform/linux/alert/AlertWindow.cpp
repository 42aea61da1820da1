#include "platform/linux/alert/AlertWindow.h"

#include "platform/Identity.h"
#include "platform/linux/system/ProgramFolder.h"

namespace audrel::alerthelper {

namespace {

constexpr int spacing = 12;
constexpr int margin = 18;
constexpr int border = 6;

/// About as wide as a line is good to read; longer words break.
constexpr int charactersOfALine = 76;

std::string madeValid(const std::string& text) {
  return linuxos::StringHandle(g_utf8_make_valid(text.c_str(), -1)).get();
}

/// A text that can be selected and copied.
GtkWidget* makeLabel(const std::string& text) {
  GtkWidget* widget = gtk_label_new(madeValid(text).c_str());
  auto* label = GTK_LABEL(widget);
  gtk_label_set_selectable(label, TRUE);
  gtk_label_set_line_wrap(label, TRUE);
  gtk_label_set_line_wrap_mode(label, PANGO_WRAP_WORD_CHAR);
  gtk_label_set_max_width_chars(label, charactersOfALine);
  gtk_label_set_xalign(label, 0);
  return widget;
}

GtkWidget* makeHeading(const std::string& text) {
  GtkWidget* heading = makeLabel(text);
  PangoAttrList* attributes = pango_attr_list_new();
  pango_attr_list_insert(attributes, pango_attr_weight_new(PANGO_WEIGHT_BOLD));
  pango_attr_list_insert(attributes, pango_attr_scale_new(PANGO_SCALE_LARGE));
  gtk_label_set_attributes(GTK_LABEL(heading), attributes);
  pango_attr_list_unref(attributes);
  return heading;
}

GtkWidget* makeIcon(const char* name) {
  GtkWidget* icon = gtk_image_new_from_icon_name(name, GTK_ICON_SIZE_DIALOG);
  gtk_widget_set_valign(icon, GTK_ALIGN_START);
  return icon;
}

GtkWidget* makeContent(const AlertTexts& texts) {
  GtkWidget* content = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, margin);
  g_object_set(content, "margin", margin, nullptr);
  gtk_container_add(GTK_CONTAINER(content), makeIcon(texts.icon));
  GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, spacing);
  gtk_container_add(GTK_CONTAINER(column), makeHeading(texts.message));
  gtk_container_add(GTK_CONTAINER(column), makeLabel(texts.informative));
  gtk_container_add(GTK_CONTAINER(content), column);
  gtk_widget_show_all(content);
  return content;
}

void addButtons(GtkDialog* dialog, std::span<const std::string> titles) {
  GtkWidget* first = nullptr;
  int index = 0;
  for (const std::string& title : titles) {
    GtkWidget* button = gtk_dialog_add_button(dialog, madeValid(title).c_str(), index++);
    first = first == nullptr ? button : first;
  }
  gtk_dialog_set_default_response(dialog, 0);
  if (first != nullptr) {
    gtk_style_context_add_class(gtk_widget_get_style_context(first),
                                GTK_STYLE_CLASS_SUGGESTED_ACTION);
    gtk_widget_grab_focus(first);  // else the first text that can be selected has it
  }
}

/// As the build leaves them beside this program, and as they are installed.
void findOwnIcons() {
  const auto folder = linuxos::programFolder();
  for (const char* place : {"share/icons", AUDREL_ICONS_FROM_HELPER}) {
    gtk_icon_theme_append_search_path(gtk_icon_theme_get_default(), (folder / place).c_str());
  }
}

}  // namespace

const char* iconOfStyle(const std::string& style) {
  if (style == "informational") {
    return identity::bundleIdentifier;
  }
  if (style == "warning") {
    return "dialog-warning";
  }
  return style == "critical" ? "dialog-error" : nullptr;
}

DialogHandle makeAlertWindow(const AlertTexts& texts) {
  findOwnIcons();
  DialogHandle handle(gtk_dialog_new());
  auto* window = GTK_WINDOW(handle.get());
  gtk_window_set_title(window, "Audrel");
  gtk_window_set_icon_name(window, identity::bundleIdentifier);
  gtk_container_set_border_width(GTK_CONTAINER(window), border);
  gtk_window_set_resizable(window, FALSE);
  gtk_window_set_position(window, GTK_WIN_POS_CENTER);
  gtk_window_set_keep_above(window, TRUE);
  gtk_window_set_urgency_hint(window, TRUE);
  atk_object_set_role(gtk_widget_get_accessible(handle.get()), ATK_ROLE_ALERT);
  auto* dialog = GTK_DIALOG(handle.get());
  gtk_container_add(GTK_CONTAINER(gtk_dialog_get_content_area(dialog)), makeContent(texts));
  addButtons(dialog, texts.buttons);
  return handle;
}

}  // namespace audrel::alerthelper

#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <span>
#include <string>

#include "platform/linux/loop/GLibHandles.h"

namespace audrel::alerthelper {

/// The icon that goes with an alert's style: the program's own with "informational", by which it
/// speaks of itself, and the desktop's with "warning" and "critical". Null for anything else.
const char* iconOfStyle(const std::string& style);

struct AlertTexts {
  const char* icon;
  std::string message;
  std::string informative;
  std::span<const std::string> buttons;
};

using DialogHandle = std::unique_ptr<GtkWidget, linuxos::Releaser<gtk_widget_destroy>>;

/// A dialog, not shown yet, whose responses are the buttons' indexes. The first button is the
/// default one and has the focus; Escape closes the dialog. GTK must be initialised. The program's
/// icons are found wherever it is.
DialogHandle makeAlertWindow(const AlertTexts& texts);

}  // namespace audrel::alerthelper

#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <span>
#include <string>

#include "platform/linux/loop/GLibHandles.h"

namespace audrel::alerthelper {

/// The icon of the desktop's theme that goes with an alert's style: "informational", "warning" or
/// "critical". Null for anything else.
const char* iconOfStyle(const std::string& style);

struct AlertTexts {
  const char* icon;
  std::string message;
  std::string informative;
  std::span<const std::string> buttons;
};

using DialogHandle = std::unique_ptr<GtkWidget, linuxos::Releaser<gtk_widget_destroy>>;

/// A dialog, not shown yet, whose responses are the buttons' indexes. The first button is the
/// default one and has the focus; Escape closes the dialog. GTK must be initialised.
DialogHandle makeAlertWindow(const AlertTexts& texts);

}  // namespace audrel::alerthelper

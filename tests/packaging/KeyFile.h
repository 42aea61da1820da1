#pragma once

#include <glib.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/loop/GLibHandles.h"

namespace audrel::packaging {

/// A file of the form that desktop entries have; one that cannot be read is empty.
class KeyFile {
 public:
  explicit KeyFile(const std::filesystem::path& file);

  /// "" where there is none.
  std::string text(const std::string& group, const std::string& key) const;

  /// The parts of a text with semicolons.
  std::vector<std::string> list(const std::string& group, const std::string& key) const;

  void setText(const std::string& group, const std::string& key, const std::string& text);

  void save(const std::filesystem::path& file) const;

 private:
  std::unique_ptr<GKeyFile, linuxos::Releaser<g_key_file_unref>> file_;
};

}  // namespace audrel::packaging

#include "tests/packaging/KeyFile.h"

#include <cstddef>

namespace audrel::packaging {

KeyFile::KeyFile(const std::filesystem::path& file) : file_(g_key_file_new()) {
  g_key_file_load_from_file(file_.get(), file.c_str(), G_KEY_FILE_NONE, nullptr);
}

std::string KeyFile::text(const std::string& group, const std::string& key) const {
  const linuxos::StringHandle text(
      g_key_file_get_string(file_.get(), group.c_str(), key.c_str(), nullptr));
  return text == nullptr ? "" : text.get();
}

std::vector<std::string> KeyFile::list(const std::string& group, const std::string& key) const {
  gsize count = 0;
  const std::unique_ptr<char*, linuxos::Releaser<g_strfreev>> texts(
      g_key_file_get_string_list(file_.get(), group.c_str(), key.c_str(), &count, nullptr));
  return {texts.get(), texts.get() + count};
}

void KeyFile::setText(const std::string& group, const std::string& key, const std::string& text) {
  g_key_file_set_string(file_.get(), group.c_str(), key.c_str(), text.c_str());
}

void KeyFile::save(const std::filesystem::path& file) const {
  g_key_file_save_to_file(file_.get(), file.c_str(), nullptr);
}

}  // namespace audrel::packaging

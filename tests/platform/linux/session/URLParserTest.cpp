#include "platform/linux/session/URLParser.h"

#include <gtest/gtest.h>

namespace audrel::linuxos {
namespace {

TEST(LinuxURLParser, takesTheTextOfAURLAsItIs) {
  for (const char* text :
       {"x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture",
        "https://example.org/a%20b?c=d#e", "appstream://io.github.audrel.Audrel",
        "file:///home/ann"}) {
    EXPECT_EQ(URLParser().urlWithString(text), NS::URL{text}) << text;
  }
}

TEST(LinuxURLParser, takesNothingElse) {
  for (const char* text : {"", "relative/path", "/absolute/path", "://example.org", "1a://b",
                           "https://[::1", "https://a/%zz"}) {
    EXPECT_EQ(URLParser().urlWithString(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace audrel::linuxos

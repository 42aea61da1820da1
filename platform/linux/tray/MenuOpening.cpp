#include "platform/linux/tray/MenuOpening.h"

namespace audrel::linuxos {

bool MenuOpening::begins(const std::string& panel, Notice notice, std::chrono::microseconds now) {
  using namespace std::chrono_literals;
  const bool continues = mayContinue_ && panel == panel_ && notice != notice_ && now - time_ < 1s;
  panel_ = panel;
  notice_ = notice;
  time_ = now;
  mayContinue_ = !continues;
  return !continues;
}

}  // namespace audrel::linuxos

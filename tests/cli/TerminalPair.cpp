#include "tests/cli/TerminalPair.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdlib>

namespace audrel::cli {

TerminalPair::TerminalPair(unsigned short columns)
    : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
  grantpt(master_);
  unlockpt(master_);
  terminal_ = open(ptsname(master_), O_RDWR | O_NOCTTY | O_CLOEXEC);
  fcntl(master_, F_SETFL, O_NONBLOCK);
  termios modes{};
  tcgetattr(terminal_, &modes);
  modes.c_oflag &= ~static_cast<tcflag_t>(OPOST);
  tcsetattr(terminal_, TCSANOW, &modes);
  setColumns(columns);
}

TerminalPair::~TerminalPair() {
  hangUp();
}

void TerminalPair::setColumns(unsigned short columns) const {
  const winsize size = {.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
  ioctl(master_, TIOCSWINSZ, &size);
}

std::string TerminalPair::takeText() const {
  std::string all;
  std::array<char, 4096> part{};
  for (ssize_t size = 0; (size = read(master_, part.data(), part.size())) > 0;) {
    all.append(part.data(), static_cast<std::size_t>(size));
  }
  return all;
}

void TerminalPair::hangUp() {
  for (int* const end : {&master_, &terminal_}) {
    if (*end >= 0) {
      close(*end);
      *end = -1;
    }
  }
}

}  // namespace audrel::cli

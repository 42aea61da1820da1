#include "platform/linux/desktop/CaptureAccess.h"

namespace audrel::linuxos {

bool CaptureAccess::preflightScreenCaptureAccess() {
  return true;
}

bool CaptureAccess::requestScreenCaptureAccess() {
  return true;
}

}  // namespace audrel::linuxos

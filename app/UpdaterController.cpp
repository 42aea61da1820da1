#include "app/UpdaterController.h"

namespace audrel {

UpdaterController::UpdaterController(SPU::UpdateFramework& framework)
    : updaterController_(framework.makeStandardUpdaterController(true)) {}

}  // namespace audrel

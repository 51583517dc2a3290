#include <cstdlib>

#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "core/unit.h"

void RTECleanup() {
    if (RTE_Initialized == 0) return;
    GlobalContext* global = _GlobalContext;
    CloseAllUnits(global, _LocalContext[0]);
    ErrorCloseCatalog();
    DestroyGlobalContext(global);
    _GlobalContext = nullptr;
    FreeLocalContext(_LocalContext);
    RTE_Initialized = 0;
}

[[noreturn]] void AbnormalExit(int32_t status) {
    RTECleanup();
    std::exit(status);
}

VRN_EXPORT void _vrnExit(int32_t status) {
    RTECleanup();
    std::exit(status);
}

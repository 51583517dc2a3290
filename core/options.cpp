#include "core/options.h"

#include "core/context.h"
#include "vrn90_keywords.h"

void SetDefaultOptions(GlobalContext* global) {
    OptionBlock& o = global->options;
    o.optCnvErr = 1;
    o.optNamelist = VRN_KEY_NEW;
    o.optNlWidth = 0;
    o.optMessages = 1;
    o.optErrRecovery = 1;
    o.optUnitVars = 0;
    o.optScratchVars = 0;
    o.optLangLvl = VRN_KEY_EXTENDED;
    o.optOptArgWarn = 0;
    o.optMultConn = 0;
    o.optWarnMultThrd = 0;
    o.optMultConnIo = VRN_KEY_NO;
    o.optErrorEof = 0;
    o.optRandom = VRN_KEY_GENERATOR1;
    o.optCpuTimeType = VRN_KEY_TOTAL_ALLTIME;
    o.optBuffering = VRN_KEY_ENABLE;
    o.optIntrinThds = 0;
    o.optIostatEnd = VRN_KEY_EXTENDED;
    o.optInternalNlDelim = VRN_KEY_EXTENDED;
    o.optBufferSize = -1;
    o.optErrLoc = 1;
    o.optErrTrace = 0;
    o.ufmtUnits = nullptr;
    o.ufmtUnitCount = 0;
    o.ufmtUnitCapacity = 0;
    o.optErrThrdNum = 0;
    o.optErrImageNum = 0;
    o.optNanInfOutput = VRN_KEY_DEFAULT;
    o.optAggressiveArrayIo = 1;
}

void CopyOptions(const GlobalContext* from, GlobalContext* to) { to->options = from->options; }

bool StrictLanguageLevel(const OptionBlock& options) {
    switch (options.optLangLvl) {
    case VRN_KEY_90STD:
    case VRN_KEY_95STD:
    case VRN_KEY_2003STD:
    case VRN_KEY_2008STD:
        return true;
    default:
        return false;
    }
}

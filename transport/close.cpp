// The CLOSE statement in its plain form: KEEP or DELETE, scratch files deleted.
#include <cerrno>

#include "core/context.h"
#include "core/errors.h"
#include "core/keywords.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "vrn90.h"

int32_t CloseCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords) {
    uint32_t disposition = 0;
    if (keywords != nullptr && keywords->version == 1) {
        for (uint32_t i = 0; i < keywords->count; ++i) {
            const KeywordEntry& entry = keywords->entries[i];
            if ((entry.tag & 0xFFFFu) != VRN_KEY_STATUS) continue;
            disposition = KeywordOfValue(entry.a, entry.b);
            if (disposition != VRN_KEY_KEEP && disposition != VRN_KEY_DELETE) {
                char text[kMaxValueText + 1];
                KeywordValueText(entry, text);
                if (ErrorHandler(kClassRecoverable, kKindError, 29, 29, ArgText(1), text, ArgInt(2), unitNumber, 0u) !=
                    kRecover) {
                    return context->status;
                }
                disposition = 0;
            }
        }
    }
    UnitRecord* unit = LookUpUnit(global, unitNumber);
    if (unit == nullptr) return context->status;  // closing an unconnected unit does nothing
    if (disposition == VRN_KEY_DELETE) unit->deleteOnClose = 1;
    if (disposition == VRN_KEY_KEEP) unit->deleteOnClose = 0;
    // A unit poisoned earlier has reported its failure already; closing it stays silent.
    bool reported = unit->permanentError != 0;
    if (!CloseUnit(global, context, unit, !unit->preconnected) && !reported) {
        ErrorHandler(kClassSevere, kKindError, 142, 142, ArgInt(1), unitNumber, ArgErrno(2), errno, 0u);
    }
    return context->status;
}

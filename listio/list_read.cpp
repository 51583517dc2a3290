#include "core/context.h"
#include "listio/listio.h"
#include "transport/transport.h"

int32_t LDEndOfFileError(LocalContext* context) {
    IORaiseEndOfFile(context);
    return context->status;
}

int32_t EndIOReadLd(LocalContext* context) {
    // The rest of the record is skipped, so that the next READ starts a new one; a
    // non-advancing READ leaves the record where it stands.
    if (!context->advancing) return context->status;
    if (context->atEndOfFile) {
        // The items read up to the end of the file: that last record is complete, and
        // the next READ meets the end.
        IOTerminateRecord(context);
        return context->status;
    }
    if (!IOTerminateRecord(context) && context->atEndOfFile) LDEndOfFileError(context);
    return context->status;
}

int32_t BeginIOReadLd(LocalContext* context, void*) {
    if (!context->dtioChild) context->endRoutine = EndIOReadLd;
    return context->status;
}

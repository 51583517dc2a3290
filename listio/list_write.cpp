#include "core/context.h"
#include "listio/listio.h"
#include "transport/transport.h"

int32_t EndIOWriteLd(LocalContext* context) { return IOTerminateRecord(context); }

int32_t BeginIOWriteLd(LocalContext* context, void*) {
    // Every list-directed record begins with a blank, which is not carriage control.
    if (context->column == 0) IOPutByte(context, ' ');
    context->endRoutine = EndIOWriteLd;
    return context->status;
}

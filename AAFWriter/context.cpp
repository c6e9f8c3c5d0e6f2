#include "context.h"

#include <cstdio>

#include "aafkit/File.h"
#include "aafkit/ResultCodes.h"
#include "model/Track.h"

namespace {

const aafUID_t g_productUid = aafkit::kNullAuid;
const aafProductVersion_t g_productVer = {0, 0, 0, 0, 0};  // release type 0: unknown

aafkit::ProductIdentification makeIdentification() {
    aafkit::ProductIdentification ident;
    ident.companyName = L"Corvane";
    ident.productName = L"Staveline";
    ident.productVersionString = L"12";
    // Kept although the host is not Windows: receiving editors know the product by it.
    ident.platform = L"Windows";
    ident.productId = g_productUid;
    ident.productVersion = g_productVer;
    return ident;
}

}  // namespace

const aafkit::ProductIdentification g_ident = makeIdentification();

void reportError(AAFRESULT code, int line, const char* source) {
    std::fprintf(stderr, "Error '%0x' returned at line %d in %s\n", unsigned(code), line, source);
}

AAFRESULT CreateAafWriterContext(AafWriterContext** context) {
    if (!context) return AAFRESULT_NULL_PARAM;  // nowhere to put it
    *context = new AafWriterContext();
    return AAFRESULT_SUCCESS;
}

void FreeAafWriterContext(AafWriterContext* context) {
    if (!context) return;
    // Events still held (never written) belong to the context as well.
    for (Track& track : context->sequence.tracks) context->sequence.events.destroy(track);
    delete context;
}

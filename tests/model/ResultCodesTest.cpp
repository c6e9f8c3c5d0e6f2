// Result codes cross the C interface as AAFRESULT: the values must be the ones callers
// compare against, and the name table must give the same codes as the constants.
#include <string>

#include "ModelLookup.h"
#include "aafkit/ResultCodes.h"

namespace modeltest {
namespace {

TEST(ResultCodes, ConstantsAndTableHoldTheirCodes) {
    EXPECT_EQ(AAFRESULT_PROP_NOT_PRESENT, int32_t(0x801200CFu));
    EXPECT_LT(AAFRESULT_PROP_NOT_PRESENT, 0) << "failures have the high bit set";
    EXPECT_EQ(AAFRESULT_SUCCESS, 0);
    EXPECT_EQ(AAFRESULT_NOT_IMPLEMENTED, int32_t(0x80004001u));
    EXPECT_EQ(AAFRESULT_RESULT_NOT_RECOGNIZED, int32_t(0x80120501u));
    auto propNotPresent = findRow(resultCodes(), [](const ResultCode& r) {
        return r.name == std::string("AAFRESULT_PROP_NOT_PRESENT");
    });
    EXPECT_EQ(found(propNotPresent, "AAFRESULT_PROP_NOT_PRESENT").code, 0x801200CFu);
}

}  // namespace
}  // namespace modeltest

// Result codes cross the C interface as AAFRESULT: the values must be the ones callers
// compare against, and the name table must agree with the constants.
#include <set>
#include <string>

#include "ModelLookup.h"
#include "aafkit/ResultCodes.h"

namespace modeltest {
namespace {

TEST(ResultCodes, ConstantsHoldTheirCodes) {
    EXPECT_EQ(AAFRESULT_PROP_NOT_PRESENT, int32_t(0x801200CFu));
    EXPECT_LT(AAFRESULT_PROP_NOT_PRESENT, 0) << "failures have the high bit set";
    EXPECT_EQ(AAFRESULT_SUCCESS, 0);
    EXPECT_EQ(AAFRESULT_NOT_IMPLEMENTED, int32_t(0x80004001u));
    EXPECT_EQ(AAFRESULT_RESULT_NOT_RECOGNIZED, int32_t(0x80120501u));
}

TEST(ResultCodes, TableNamesAreUniqueAndMatchTheConstants) {
    std::set<std::string> names;
    for (const ResultCode& r : resultCodes())
        EXPECT_TRUE(names.insert(r.name).second) << "listed twice: " << r.name;
    auto propNotPresent = findRow(resultCodes(), [](const ResultCode& r) {
        return r.name == std::string("AAFRESULT_PROP_NOT_PRESENT");
    });
    EXPECT_EQ(found(propNotPresent, "AAFRESULT_PROP_NOT_PRESENT").code,
              uint32_t(AAFRESULT_PROP_NOT_PRESENT));
}

}  // namespace
}  // namespace modeltest

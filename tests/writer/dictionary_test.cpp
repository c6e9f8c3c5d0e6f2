#include <gtest/gtest.h>

#include <memory>

#include "aafkit/Dictionary.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"

namespace {

const aafUID_t kAttributes = {0x60958184, 0x47b1, 0x11d4, {0xa0, 0x1c, 0x00, 0x04, 0xac, 0x96, 0x9f, 0x50}};
const aafUID_t kMine = {0x11111111, 0x2222, 0x3333, {0x44, 0x44, 0x44, 0x44, 0x44, 0x44, 0x44, 0x44}};

TEST(Dictionary, OptionalPropertiesTakeDynamicPidsFromTheTopPerFile) {
    auto file = aafkit::File::createNew(aafkit::ProductIdentification());
    auto other = aafkit::File::createNew(aafkit::ProductIdentification());
    auto attributes = [](aafkit::File& f) {
        return aafkit::registerOptionalProperty(f, AUID_AAFComponent, kAttributes, "ComponentAttributeList",
                                                kAAFTypeID_TaggedValueStrongReferenceVector);
    };
    auto mine = [](aafkit::File& f, const aafUID_t& type) {
        return aafkit::registerOptionalProperty(f, AUID_AAFMob, kMine, "Mine", type);
    };
    const auto* list = attributes(*file);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->pid, 0xffff);
    EXPECT_EQ(attributes(*file), list);
    const auto* next = mine(*file, kAAFTypeID_Int32);
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next->pid, 0xfffe);
    EXPECT_TRUE(next->optional);
    EXPECT_EQ(mine(*file, {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}}), nullptr);  // a type the model lacks

    // Each file numbers its own, in its own order.
    const auto* mineThere = mine(*other, kAAFTypeID_Int32);
    const auto* listThere = attributes(*other);
    ASSERT_TRUE(mineThere && listThere);
    EXPECT_EQ(mineThere->pid, 0xffff);
    EXPECT_EQ(listThere->pid, 0xfffe);
    EXPECT_EQ(list->pid, 0xffff);
}

}  // namespace

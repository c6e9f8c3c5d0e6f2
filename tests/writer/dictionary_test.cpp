#include <gtest/gtest.h>

#include <memory>

#include "aafkit/Dictionary.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/Values.h"
#include "aafkit/meta/Ids.h"

namespace {

using aafkit::Object;

TEST(Dictionary, LookupsAndFirstRegistrationWins) {
    auto file = aafkit::File::createNew(aafkit::ProductIdentification());
    Object* found = nullptr;
    EXPECT_EQ(aafkit::lookupDefinition(*file, PID_Dictionary_DataDefinitions, kAAFDataDef_Picture, found), 0);
    EXPECT_EQ(aafkit::lookupDefinition(*file, PID_Dictionary_OperationDefinitions, kAAFOperationDef_MonoAudioGain,
                                       found),
              AAFRESULT_NO_MORE_OBJECTS);
    Object& first = aafkit::newDefinition(*file, AUID_AAFOperationDefinition, kAAFOperationDef_MonoAudioGain,
                                          L"Audio Effect", L"Audio Effect");
    Object& second = aafkit::newDefinition(*file, AUID_AAFOperationDefinition, kAAFOperationDef_MonoAudioGain,
                                           L"Video Effect", L"Video Effect");
    EXPECT_EQ(&aafkit::registerDefinition(*file, PID_Dictionary_OperationDefinitions, first), &first);
    EXPECT_EQ(&aafkit::registerDefinition(*file, PID_Dictionary_OperationDefinitions, second), &first);
    ASSERT_EQ(aafkit::lookupDefinition(*file, PID_Dictionary_OperationDefinitions, kAAFOperationDef_MonoAudioGain,
                                       found), 0);
    std::wstring name;
    aafkit::getString(*found, PID_DefinitionObject_Name, name);
    EXPECT_EQ(name, L"Audio Effect");
}

TEST(Dictionary, OptionalPropertiesTakeDynamicPidsFromTheTop) {
    auto file = aafkit::File::createNew(aafkit::ProductIdentification());
    const aafUID_t known = {0x60958184, 0x47b1, 0x11d4, {0xa0, 0x1c, 0x00, 0x04, 0xac, 0x96, 0x9f, 0x50}};
    const aafUID_t mine = {0x11111111, 0x2222, 0x3333, {0x44, 0x44, 0x44, 0x44, 0x44, 0x44, 0x44, 0x44}};
    const auto* list = aafkit::registerOptionalProperty(*file, AUID_AAFComponent, known, "ComponentAttributeList",
                                                        kAAFTypeID_TaggedValueStrongReferenceVector);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->pid, 0xffff);
    const auto* again = aafkit::registerOptionalProperty(*file, AUID_AAFComponent, known, "ComponentAttributeList",
                                                         kAAFTypeID_TaggedValueStrongReferenceVector);
    EXPECT_EQ(again, list);
    const auto* next = aafkit::registerOptionalProperty(*file, AUID_AAFMob, mine, "Mine", kAAFTypeID_Int32);
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next->pid, 0xfffe);
    EXPECT_TRUE(next->optional);
    const aafUID_t unknownType = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    EXPECT_EQ(aafkit::registerOptionalProperty(*file, AUID_AAFMob, mine, "Mine", unknownType), nullptr);

    // Each file numbers its own: another file starts again at the top.
    auto other = aafkit::File::createNew(aafkit::ProductIdentification());
    const auto* mineThere = aafkit::registerOptionalProperty(*other, AUID_AAFMob, mine, "Mine", kAAFTypeID_Int32);
    ASSERT_NE(mineThere, nullptr);
    EXPECT_EQ(mineThere->pid, 0xffff);
    const auto* listThere = aafkit::registerOptionalProperty(*other, AUID_AAFComponent, known, "ComponentAttributeList",
                                                             kAAFTypeID_TaggedValueStrongReferenceVector);
    ASSERT_NE(listThere, nullptr);
    EXPECT_EQ(listThere->pid, 0xfffe);
    EXPECT_EQ(list->pid, 0xffff);  // the first file keeps its numbering
}

}  // namespace

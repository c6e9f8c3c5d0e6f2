#include "NewFileBuilder.h"

#include <chrono>
#include <ctime>
#include <random>

#include "om/Values.h"
#include "meta/BaselineModel.h"
#include "meta/Ids.h"

namespace aafkit {

namespace {

// The SDK's own toolkit version, which it records in every Identification.
constexpr aafProductVersion_t kToolkitVersion = {1, 1, 6, 0, 4};

// The data definitions every new file carries, whether used or not.
const aafUID_t* const kBuiltinDataDefinitions[] = {
    &kAAFDataDef_Picture,        &kAAFDataDef_LegacyPicture, &kAAFDataDef_Matte,
    &kAAFDataDef_PictureWithMatte, &kAAFDataDef_Sound,       &kAAFDataDef_LegacySound,
    &kAAFDataDef_Timecode,       &kAAFDataDef_LegacyTimecode, &kAAFDataDef_Edgecode,
    &kAAFDataDef_DescriptiveMetadata, &kAAFDataDef_Auxiliary,
};

void setProductVersion(Object& o, uint16_t pid, const aafProductVersion_t& v) {
    std::vector<uint8_t> bytes;
    for (uint16_t part : {v.major, v.minor, v.tertiary, v.patchLevel}) {
        bytes.push_back(uint8_t(part));
        bytes.push_back(uint8_t(part >> 8));
    }
    bytes.push_back(v.type);
    setBytes(o, pid, std::move(bytes));
}

Object& addDefinition(File& file, Object& dictionary, uint16_t setPid, const aafUID_t& classId,
                      const meta::BaselineDefinition& row, bool withDescription) {
    Object& definition = *file.create(classId);
    setAuid(definition, PID_DefinitionObject_Identification, row.id);
    setString(definition, PID_DefinitionObject_Name, utf8ToWide(row.name.c_str()));
    setString(definition, PID_DefinitionObject_Description,
              utf8ToWide(withDescription ? row.description.c_str() : ""));
    addToSet(dictionary, setPid, definition);
    return definition;
}

void addBuiltinDefinitions(File& file, Object& dictionary) {
    for (const meta::BaselineDefinition& row : meta::baselineDefinitions()) {
        if (row.group == meta::DefinitionGroup::ContainerDefs)
            addDefinition(file, dictionary, PID_Dictionary_ContainerDefinitions, AUID_AAFContainerDefinition, row,
                          false);
        if (row.group != meta::DefinitionGroup::DataDefs) continue;
        for (const aafUID_t* builtin : kBuiltinDataDefinitions)
            if (*builtin == row.id)
                addDefinition(file, dictionary, PID_Dictionary_DataDefinitions, AUID_AAFDataDefinition, row, true);
    }
}

Object& addIdentification(File& file, Object& header, const ProductIdentification& id) {
    Object& identification = *file.create(AUID_AAFIdentification);
    setString(identification, PID_Identification_CompanyName, id.companyName);
    setString(identification, PID_Identification_ProductName, id.productName);
    setProductVersion(identification, PID_Identification_ProductVersion, id.productVersion);
    setString(identification, PID_Identification_ProductVersionString, id.productVersionString);
    setAuid(identification, PID_Identification_ProductID, id.productId);
    setTimeStamp(identification, PID_Identification_Date, nowTimeStamp());
    setProductVersion(identification, PID_Identification_ToolkitVersion, kToolkitVersion);
    setString(identification, PID_Identification_Platform, id.platform);
    setAuid(identification, PID_Identification_GenerationAUID, newAuid());
    appendObject(header, PID_Header_IdentificationList, identification);
    return identification;
}

// Each thread draws from its own generator, seeded from the system's entropy: files
// written at once on different threads neither race nor share identifiers.
std::mt19937_64& threadGenerator() {
    thread_local std::mt19937_64 generator = [] {
        std::random_device entropy;
        std::seed_seq seed{entropy(), entropy(), entropy(), entropy(),
                           unsigned(std::chrono::steady_clock::now().time_since_epoch().count())};
        return std::mt19937_64(seed);
    }();
    return generator;
}

}  // namespace

aafTimeStamp_t nowTimeStamp() {
    std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    return {int16_t(utc.tm_year + 1900), uint8_t(utc.tm_mon + 1), uint8_t(utc.tm_mday), uint8_t(utc.tm_hour),
            uint8_t(utc.tm_min), uint8_t(utc.tm_sec), 0};
}

aafUID_t newAuid() {
    std::mt19937_64& random = threadGenerator();
    uint64_t a = random(), b = random();
    aafUID_t id;
    id.Data1 = uint32_t(a);
    id.Data2 = uint16_t(a >> 32);
    id.Data3 = uint16_t(((a >> 48) & 0x0fff) | 0x4000);  // version 4 (random)
    for (int i = 0; i < 8; ++i) id.Data4[i] = uint8_t(b >> (8 * i));
    id.Data4[0] = uint8_t((id.Data4[0] & 0x3f) | 0x80);
    return id;
}

void NewFileBuilder::build(File& file, const ProductIdentification& identification) {
    file.ownsMetaDictionary_ = true;
    file.setRoot(file.newObject(meta::kRootClassId, file.model().findClass(meta::kRootClassId)));
    Object& header = *file.create(AUID_AAFHeader);
    setObject(*file.root(), meta::kRootHeaderPid, header);
    setInt16(header, PID_Header_ByteOrder, 0x4949);
    setTimeStamp(header, PID_Header_LastModified, nowTimeStamp());
    Object& content = *file.create(AUID_AAFContentStorage);
    setObject(header, PID_Header_Content, content);
    Property& mobs = content.ensure(PID_ContentStorage_Mobs, StoredForm::StrongRefSet);
    mobs.keyPid = PID_Mob_MobID;
    mobs.keySize = 32;
    Object& dictionary = *file.create(AUID_AAFDictionary);
    setObject(header, PID_Header_Dictionary, dictionary);
    setBytes(header, PID_Header_Version, {1, 1});
    addIdentification(file, header, identification);
    setUInt32(header, PID_Header_ObjectModelVersion, 1);
    addBuiltinDefinitions(file, dictionary);
}

}  // namespace aafkit

#pragma once
// A reader session over a file built in memory with aafkit, so each test holds exactly
// the objects it is about. Errors printed by the reader are captured.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

#include "AafParser/aaf_basic.h"
#include "aafkit/Builders.h"
#include "aafkit/Dictionary.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"

namespace readertest {

using aafkit::Object;

inline aafMobID_t mobId(uint32_t n) {
    aafMobID_t id{};
    id.length = 0x13;
    id.material.Data1 = n;  // mobs enumerate by the stored bytes: little-endian Data1 first
    return id;
}

class InMemorySession {
public:
    InMemorySession() : context_(new AafParseContext) {
        aafkit::ProductIdentification id;
        id.companyName = L"Corvane";
        id.productName = L"Staveline";
        context_->file = aafkit::File::createNew(id);
        context_->header = context_->file->header();
        context_->dictionary = context_->file->dictionary();
    }
    ~InMemorySession() { CloseFile(context_); }
    InMemorySession(const InMemorySession&) = delete;
    InMemorySession& operator=(const InMemorySession&) = delete;

    AafParseContext* context() { return context_; }
    aafkit::File& file() { return *context_->file; }

    // A mob of the class with a fixed MobID, a name (unless empty) and a usage code (if given).
    Object& mob(const aafUID_t& mobClass, uint32_t id, const std::wstring& name, const aafUID_t* usage = nullptr) {
        Object& m = aafkit::createMob(file(), mobClass);
        aafkit::setMobId(m, PID_Mob_MobID, mobId(id));
        if (!name.empty()) aafkit::setString(m, PID_Mob_Name, name);
        if (usage) aafkit::setAuid(m, PID_Mob_UsageCode, *usage);
        aafkit::addMob(file(), m);
        return m;
    }

    // A timeline slot (physical track number 0 leaves the property absent).
    Object& slot(Object& mob, uint32_t slotId, Object& segment, uint32_t physical = 0,
                 aafRational_t rate = {25, 1}) {
        return attach(mob, aafkit::createTimelineSlot(file(), rate), slotId, segment, physical);
    }
    Object& eventSlot(Object& mob, uint32_t slotId, Object& segment) {
        return attach(mob, aafkit::createEventSlot(file(), {25, 1}), slotId, segment, 0);
    }

    Object& clip(uint32_t sourceMob, uint32_t sourceSlot, int64_t length, int64_t start,
                 const aafUID_t& dataDef = kAAFDataDef_Sound) {
        return aafkit::createSourceClip(file(), dataDef, length, {mobId(sourceMob), sourceSlot, start});
    }
    Object& filler(int64_t length) { return aafkit::createFiller(file(), kAAFDataDef_Sound, length); }

    // An operation group over a newly defined operation of one input.
    Object& group(const aafUID_t& operationId, int64_t length) {
        Object& d = definition(PID_Dictionary_OperationDefinitions, AUID_AAFOperationDefinition, operationId);
        aafkit::setInt32(d, PID_OperationDefinition_NumberInputs, 1);
        return aafkit::createOperationGroup(file(), kAAFDataDef_Sound, length, d);
    }
    void input(Object& group, Object& segment) {
        ASSERT_EQ(aafkit::appendObject(group, PID_OperationGroup_InputSegments, segment), 0);
    }

    // A constant parameter whose value is stored as `size` bytes of `value` with that type.
    Object& constant(Object& group, const aafUID_t& parameterId, const aafUID_t& type, const void* value,
                     size_t size) {
        Object& p = parameter(group, AUID_AAFConstantValue, parameterId);
        aafkit::setIndirect(p, PID_ConstantValue_Value, type, value, size);
        return p;
    }
    Object& varying(Object& group, const aafUID_t& parameterId) {
        return parameter(group, AUID_AAFVaryingValue, parameterId);
    }
    void point(Object& varying, aafRational_t time, const aafUID_t& type, const void* value, size_t size) {
        Object& p = aafkit::createObject(file(), AUID_AAFControlPoint);
        aafkit::setRational(p, PID_ControlPoint_Time, time);
        aafkit::setIndirect(p, PID_ControlPoint_Value, type, value, size);
        ASSERT_EQ(aafkit::appendObject(varying, PID_VaryingValue_PointList, p), 0);
    }

    // Parses as the host does, answering what the reader printed.
    std::string parse(bool clips = true) {
        testing::internal::CaptureStderr();
        if (clips) ParseClips(context_);
        ParseComposition(context_);
        return testing::internal::GetCapturedStderr();
    }

private:
    Object& definition(uint16_t setPid, const aafUID_t& classId, const aafUID_t& id) {
        Object& d = aafkit::newDefinition(file(), classId, id, L"def", L"");
        return aafkit::registerDefinition(file(), setPid, d);
    }
    Object& attach(Object& mob, Object& s, uint32_t slotId, Object& segment, uint32_t physical) {
        aafkit::setUInt32(s, PID_MobSlot_SlotID, slotId);
        if (physical) aafkit::setUInt32(s, PID_MobSlot_PhysicalTrackNumber, physical);
        EXPECT_EQ(aafkit::setObject(s, PID_MobSlot_Segment, segment), 0);
        EXPECT_EQ(aafkit::appendObject(mob, PID_Mob_Slots, s), 0);
        return s;
    }
    Object& parameter(Object& group, const aafUID_t& classId, const aafUID_t& parameterId) {
        Object* known = nullptr;
        if (aafkit::lookupDefinition(file(), PID_Dictionary_ParameterDefinitions, parameterId, known) != 0)
            definition(PID_Dictionary_ParameterDefinitions, AUID_AAFParameterDefinition, parameterId);
        Object& p = aafkit::createObject(file(), classId);
        aafkit::setAuid(p, PID_Parameter_Definition, parameterId);
        EXPECT_EQ(aafkit::appendObject(group, PID_OperationGroup_Parameters, p), 0);
        return p;
    }

    AafParseContext* context_;
};

constexpr aafUID_t kUnknownOperation = {0x12345678, 0, 0, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr uint32_t kMaster = 100;

// A session holding a master mob (id 100, "master") whose slot 1 has physical track 1,
// and the top-level composition the test fills.
class Composed : public testing::Test {
protected:
    void SetUp() override {
        Object& master = s.mob(AUID_AAFMasterMob, kMaster, L"master");
        s.slot(master, 1, s.clip(0, 0, 1000, 0), 1);
    }
    // A composition without usage code whose slot 1 holds `segment`.
    Object& compose(Object& segment, uint32_t id = 50) {
        Object& comp = s.mob(AUID_AAFCompositionMob, id, L"comp");
        s.slot(comp, 1, segment);
        return comp;
    }
    AafParseContext* c() { return s.context(); }

    InMemorySession s;
};

// The lines the reader printed, one string each.
inline std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

}  // namespace readertest

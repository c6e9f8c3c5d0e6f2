// Writing a master clip: its master mob, one file source mob per track (one per clip
// for MXF media) and the import source mob that carries the start timecode.
#include <string>

#include "aaf_clip.h"
#include "aafkit/Builders.h"
#include "aafkit/Checked.h"
#include "aafkit/Dictionary.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/Saturating.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "context.h"

using aafkit::Object;

namespace {

constexpr char kErrorSource[] = "AAFWriter/aaf_clip";

// Import source material is declared 12960000 edit units long (five days at 30 fps);
// the values, including the extra unit, are what receiving editors expect.
constexpr int64_t kImportLength = 12960000;
constexpr int64_t kImportLengthPlusOne = 12960001;
constexpr int64_t kMxfTimecodeLength = 12947040;
constexpr uint32_t kMxfTimecodeTrackNumber = 257;  // physical number 256

// The AIFF-C header every sound descriptor carries, patched per track.
const uint8_t Avid_AIFC_Summary[74] = {
    'F', 'O', 'R', 'M', 0x00, 0x00, 0x00, 0x42, 'A', 'I', 'F', 'C', 'C', 'O', 'M', 'M', 0x00, 0x00, 0x00, 0x26,
    0x00, 0x00,                                                  // channels
    0x00, 0x00, 0x00, 0x00,                                      // sample frames
    0x00, 0x10,                                                  // sample size
    0x40, 0x0E, 0xBB, 0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // 48000 as 80-bit extended
    'N', 'O', 'N', 'E', 0x0E, 'N', 'o', 't', ' ', 'C', 'o', 'm', 'p', 'r', 'e', 's', 's', 'e', 'd', 0x00,
    'S', 'S', 'N', 'D', 0x01, 0x13, 0x23, 0x2C, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};

aafkit::File& fileOf(AafWriterContext* context) { return aafkit::fileOf(*context->header); }

const aafUID_t& dataDefOf(const ClipTrack& track) {
    return track.kind == kClipTrackPicture ? kAAFDataDef_Picture : kAAFDataDef_Sound;
}

uint16_t roundedUpRate(int32_t numerator, int32_t denominator) {
    if (denominator == 0) return 0;  // no rate given: no frames per second either
    // In 64 bits: the lowest numerator over -1 does not fit 32.
    const int64_t n = numerator, d = denominator;
    return uint16_t(n / d + (n % d ? 1 : 0));
}

aafMobID_t mobIdOf(const Object& mob) {
    aafMobID_t id;
    aafkit::check(aafkit::getMobId(mob, PID_Mob_MobID, id));
    return id;
}

std::vector<uint8_t> aifcSummary(const ClipTrack& track) {
    std::vector<uint8_t> summary(std::begin(Avid_AIFC_Summary), std::end(Avid_AIFC_Summary));
    summary[21] = uint8_t(track.widthOrChannels);
    summary[27] = uint8_t(track.heightOrBits);
    if (track.sampleRate == 44100) {  // only 48000 and 44100 are told apart
        summary[30] = 0xAC;
        summary[31] = 0x44;
    }
    return summary;
}

Object& createDescriptorObject(aafkit::File& file, const aafUID_t& classId) {
    Object* descriptor = file.create(classId);
    if (!descriptor) {
        REPORT_ERROR(AAFRESULT_INVALID_PARAM);
        throw int(AAFRESULT_INVALID_PARAM);
    }
    return *descriptor;
}

Object& createAifcDescriptor(aafkit::File& file, const ClipTrack& track) {
    Object& descriptor = createDescriptorObject(file, AUID_AAFAIFCDescriptor);
    aafkit::setRational(descriptor, PID_FileDescriptor_SampleRate, {int32_t(track.sampleRate), 1});
    aafkit::setBytes(descriptor, PID_AIFCDescriptor_Summary, aifcSummary(track));
    return descriptor;
}

Object& createPictureDescriptor(aafkit::File& file, const ClipTrack& track) {
    Object& descriptor = aafkit::createCDCIDescriptor(file);
    aafkit::setRational(descriptor, PID_FileDescriptor_SampleRate, track.editRate);
    const uint32_t height = track.heightOrBits, width = track.widthOrChannels;
    aafkit::setUInt32(descriptor, PID_DigitalImageDescriptor_StoredHeight, height);
    aafkit::setUInt32(descriptor, PID_DigitalImageDescriptor_StoredWidth, width);
    for (uint16_t pid : {PID_DigitalImageDescriptor_DisplayHeight, PID_DigitalImageDescriptor_SampledHeight})
        aafkit::setUInt32(descriptor, pid, height);
    for (uint16_t pid : {PID_DigitalImageDescriptor_DisplayWidth, PID_DigitalImageDescriptor_SampledWidth})
        aafkit::setUInt32(descriptor, pid, width);
    for (uint16_t pid : {PID_DigitalImageDescriptor_DisplayXOffset, PID_DigitalImageDescriptor_DisplayYOffset,
                         PID_DigitalImageDescriptor_SampledXOffset, PID_DigitalImageDescriptor_SampledYOffset})
        aafkit::setInt32(descriptor, pid, 0);
    return descriptor;
}

// The codec definition of the descriptor's kind, registered on first use.
Object& codecDefinition(aafkit::File& file, const ClipTrack& track) {
    bool picture = track.kind == kClipTrackPicture;
    const aafUID_t& id = picture ? kAAFCodecDef_CDCI : kAAFCodecDef_AIFC;
    Object* codec = nullptr;
    if (aafkit::lookupDefinition(file, PID_Dictionary_CodecDefinitions, id, codec) == AAFRESULT_SUCCESS)
        return *codec;
    const wchar_t* name = picture ? L"CDCI" : L"AIFC";
    Object& created = aafkit::newDefinition(file, AUID_AAFCodecDefinition, id, name, name);
    Object* essenceKind = nullptr;
    aafkit::check(aafkit::lookupDefinition(file, PID_Dictionary_DataDefinitions, dataDefOf(track), essenceKind));
    aafkit::check(aafkit::addWeakReference(created, PID_CodecDefinition_DataDefinitions,
                                           aafkit::StoredForm::WeakRefVector, *essenceKind));
    aafkit::setClassReference(created, PID_CodecDefinition_FileDescriptorClass,
                              picture ? AUID_AAFCDCIDescriptor : AUID_AAFAIFCDescriptor);
    return aafkit::registerDefinition(file, PID_Dictionary_CodecDefinitions, created);
}

void setEssenceDescriptor(Object& fileMob, const Clip& clip, const ClipTrack& track, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    if (track.kind != kClipTrackPicture && track.kind != kClipTrackSound) throw int(AAFRESULT_ILLEGAL_VALUE);
    bool picture = track.kind == kClipTrackPicture;
    Object& descriptor = picture ? createPictureDescriptor(file, track) : createAifcDescriptor(file, track);
    Object* container = nullptr;
    aafkit::check(aafkit::lookupDefinition(file, PID_Dictionary_ContainerDefinitions, kAAFContainerDef_External,
                                           container));
    aafkit::check(aafkit::setReference(descriptor, PID_FileDescriptor_ContainerFormat, *container));
    aafkit::check(aafkit::setReference(descriptor, PID_FileDescriptor_CodecDefinition, codecDefinition(file, track)));
    aafkit::setInt64(descriptor, PID_FileDescriptor_Length, picture ? track.length : track.sampleLength);
    aafkit::check(aafkit::appendObject(descriptor, PID_EssenceDescriptor_Locator,
                                       aafkit::createNetworkLocator(file, clip.path)));
    aafkit::check(aafkit::setObject(fileMob, PID_SourceMob_EssenceDescription, descriptor));
}

// The import source mob's slot for a track: the whole source, unresolved.
Object& importTrackSegment(const ClipTrack& track, int64_t startTimecode, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    const aafSourceRef_t nowhere = {};
    Object& clip = aafkit::createSourceClip(file, dataDefOf(track), kImportLength, nowhere);
    aafkit::setInt64(clip, PID_Component_Length, kImportLengthPlusOne);
    if (startTimecode != 0) return clip;
    Object& sequence = aafkit::createSequence(file, dataDefOf(track));
    aafkit::appendComponent(sequence, clip);
    aafkit::appendComponent(sequence, aafkit::createFiller(file, dataDefOf(track), 1));
    aafkit::setInt64(sequence, PID_Component_Length, kImportLengthPlusOne);
    return sequence;
}

// The MXF file source mob of the clip: found again by the ID its first track recorded.
Object& fileSourceMob(Clip& clip, bool mxf, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    if (mxf)
        if (Object* written = file.lookupMob(clip.writtenFileMobId)) return *written;
    Object& mob = aafkit::createMob(file, AUID_AAFSourceMob);
    if (!mxf) aafkit::setString(mob, PID_Mob_Name, clip.path);
    if (mxf && clip.hasFileMobId) aafkit::setMobId(mob, PID_Mob_MobID, clip.fileMobId);
    aafkit::addMob(file, mob);
    return mob;
}

void addMxfTimecodeSlot(Object& fileMob, const Clip& clip, const ClipTrack& track, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    const aafTimecode_t timecode = {clip.startTimecode, int16_t(clip.dropFrame),
                                    uint16_t(context->sequence.timecodeFps)};
    Object& sequence = aafkit::createSequence(file, kAAFDataDef_Timecode);
    aafkit::appendComponent(sequence, aafkit::createTimecode(file, clip.length, timecode));
    addTimelineSlot(fileMob, track.editRate, sequence, kMxfTimecodeTrackNumber, context);
}

Object& importTimecodeSegment(const Clip& clip, bool mxf, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    const aafTimecode_t value = {mxf ? 0 : clip.startTimecode, int16_t(clip.dropFrame),
                                 roundedUpRate(clip.rateNumerator, clip.rateDenominator)};
    Object& timecode = aafkit::createTimecode(file, mxf ? kMxfTimecodeLength : kImportLengthPlusOne, value);
    if (mxf) {
        aafkit::setInt64(timecode, PID_Component_Length, kMxfTimecodeLength);
        return timecode;
    }
    aafkit::setDataDefinition(timecode, kAAFDataDef_Timecode);
    Object& sequence = aafkit::createSequence(file, kAAFDataDef_Timecode);
    aafkit::appendComponent(sequence, timecode);
    aafkit::setInt64(sequence, PID_Component_Length, kImportLengthPlusOne);
    if (clip.startTimecode != 0) {
        const int64_t timecodeLength = aafkit::saturatingAdd(clip.length, 1);
        aafkit::setInt64(timecode, PID_Component_Length, timecodeLength);
        aafkit::appendComponent(sequence, aafkit::createFiller(file, kAAFDataDef_Timecode,
                                                               aafkit::saturatingSubtract(kImportLength, timecodeLength)));
        aafkit::setInt64(sequence, PID_Component_Length, kImportLength);
    }
    return sequence;
}

void appendNamedSlot(Object& mob, Object& slot, uint32_t slotId, const wchar_t* name, uint32_t physicalNumber,
                     Object& segment) {
    aafkit::setUInt32(slot, PID_MobSlot_SlotID, slotId);
    aafkit::setString(slot, PID_MobSlot_SlotName, name);
    aafkit::setUInt32(slot, PID_MobSlot_PhysicalTrackNumber, physicalNumber);
    aafkit::check(aafkit::setObject(slot, PID_MobSlot_Segment, segment));
    aafkit::check(aafkit::appendObject(mob, PID_Mob_Slots, slot));
}

Object& createImportSourceMob(const Clip& clip, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    Object& mob = aafkit::createMob(file, AUID_AAFSourceMob);
    if (clip.hasTapeMobId) aafkit::setMobId(mob, PID_Mob_MobID, clip.tapeMobId);
    Object& descriptor = aafkit::createObject(file, AUID_AAFImportDescriptor);
    aafkit::check(aafkit::appendObject(descriptor, PID_EssenceDescriptor_Locator,
                                       aafkit::createNetworkLocator(file, clip.path)));
    aafkit::check(aafkit::setObject(mob, PID_SourceMob_EssenceDescription, descriptor));
    return mob;
}

void writeMasterClip(Clip& clip, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    Object& master = aafkit::createMob(file, AUID_AAFMasterMob);
    clip.masterMobId = mobIdOf(master);
    aafkit::setString(master, PID_Mob_Name, clip.name);
    aafkit::addMob(file, master);

    Object& importMob = createImportSourceMob(clip, context);
    if (!context->sequence.compositionStarted) throw int(AAFRESULT_NOT_INITIALIZED);
    bool mxf = isMxfFile(clip.path);
    const aafRational_t clipRate = {clip.rateNumerator, clip.rateDenominator};
    appendNamedSlot(importMob, aafkit::createTimelineSlot(file, clipRate), 1, L"TC1", 1,
                    importTimecodeSegment(clip, mxf, context));
    aafkit::addMob(file, importMob);

    for (const ClipTrack& track : clip.tracks)
        createSourceMob(clip, track, clip.startTimecode, master, clip.path, importMob, context);
}

}  // namespace

uint32_t addTimelineSlot(Object& mob, const aafRational_t& editRate, Object& segment, uint32_t trackNumber,
                         AafWriterContext* context) {
    const std::vector<Object*>* slots = nullptr;
    size_t count = aafkit::getObjects(mob, PID_Mob_Slots, slots) == AAFRESULT_SUCCESS ? slots->size() : 0;
    auto slotId = uint32_t(count + 1);
    uint32_t physicalNumber = trackNumber == 1 ? 1 : trackNumber - 1;
    appendNamedSlot(mob, aafkit::createTimelineSlot(fileOf(context), editRate), slotId, L"", physicalNumber,
                    segment);
    return slotId;
}

Object& createSourceClip(const aafSourceRef_t& sourceRef, const ClipTrack& track, AafWriterContext* context) {
    if (track.kind != kClipTrackPicture && track.kind != kClipTrackSound) throw int(AAFRESULT_ILLEGAL_VALUE);
    return aafkit::createSourceClip(fileOf(context), dataDefOf(track), track.length, sourceRef);
}

// The master mob is handed over as the object the caller holds: looking it up by ID after
// every added mob would index the whole content storage again each time.
void createSourceMob(Clip& clip, const ClipTrack& track, int64_t startTimecode, Object& masterMob,
                     const wchar_t* path, Object& importSourceMob, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    addTimelineSlot(importSourceMob, track.editRate, importTrackSegment(track, startTimecode, context),
                    track.trackNumber, context);

    bool mxf = isMxfFile(path);
    Object& fileMob = fileSourceMob(clip, mxf, context);
    if (!(mxf && track.kind == kClipTrackSound)) setEssenceDescriptor(fileMob, clip, track, context);

    const aafSourceRef_t toImport = {mobIdOf(importSourceMob), track.trackNumber + 1, mxf ? startTimecode : 0};
    uint32_t fileSlot = addTimelineSlot(fileMob, track.editRate, createSourceClip(toImport, track, context),
                                        track.trackNumber, context);
    if (mxf && track.kind == kClipTrackPicture) addMxfTimecodeSlot(fileMob, clip, track, context);

    const aafSourceRef_t toFile = {mobIdOf(fileMob), fileSlot, 0};
    Object* segment = &createSourceClip(toFile, track, context);
    if (clip.hasTapeMobId) {
        Object& sequence = aafkit::createSequence(file, dataDefOf(track));
        aafkit::appendComponent(sequence, *segment);
        segment = &sequence;
    }
    addTimelineSlot(masterMob, track.editRate, *segment, track.trackNumber, context);
    clip.writtenFileMobId = mobIdOf(fileMob);
}

AAFRESULT WriteClips(AafWriterContext* context) {
    if (!context) return AAFRESULT_INVALID_PARAM;
    for (Clip& clip : context->clips)
        if (!clip.isSubClip) writeMasterClip(clip, context);
    return AAFRESULT_SUCCESS;
}

#pragma once
// The media of every clip in a file: one entry per file source mob, named after the
// master clip that uses it, with its descriptor's audio and whether its essence is
// inside the file.
#include <string>
#include <vector>

#include "aafkit/Essence.h"
#include "aafkit/File.h"

struct MediaEntry {
    aafkit::Object* fileMob = nullptr;
    aafkit::Object* descriptor = nullptr;  // null when the mob has none
    aafMobID_t mobId = {};
    std::string mobIdText;
    std::string clipName;                   // the master clip's name, else the file mob's, else empty
    std::string kind;                       // "sound", "picture" or "data"
    aafkit::Object* essenceData = nullptr;  // null for linked media
    aafkit::AudioDescription audio;
    aafkit::Status audioStatus;  // why the media is not audio read here, if it is not
    std::string locator;         // the descriptor's first locator, as stored

    // The clip's name for messages and file names: its name, or its MobID without one.
    const std::string& label() const { return clipName.empty() ? mobIdText : clipName; }
};

std::vector<MediaEntry> catalogueMedia(const aafkit::File& file);

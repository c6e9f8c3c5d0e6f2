#pragma once
// Picture and sound properties of a clip from the essence descriptors of its file mobs.
#include "aafkit/om/Object.h"
#include "clips.h"

// First match wins: CDCI, AIFC, WAVE, import (nothing), multiple (first picture and first
// PCM sound sub-descriptor); any other descriptor adds nothing.
void processEssenceDescriptor(SourceClip& clip, const aafkit::Object& descriptor);

// Marks the clip as picture and takes the stored view and frame rate of a CDCI descriptor.
AAFRESULT processCDCI(SourceClip& clip, const aafkit::Object& descriptor);

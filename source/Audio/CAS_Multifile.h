#pragma once
#include "Audio/CAS_MultiSpool.h"
#include "Files/CFileRef.h"

/** A series of files read as one stream, such as the parts of a bin image. */
class CAS_Multifile final : public CAS_MultiSpool {
public:
    explicit CAS_Multifile(std::span<const CFileRef> files, SpoolType type = SpoolType::kAudio,
                           std::size_t unitBytes = kSpool_AudioUnitBytes);
};

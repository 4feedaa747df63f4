#include "Library/SingerRecord.h"

#include "Library/ReadID.h"

std::uint32_t SingerRecord::ID() const { return ReadID(meta, "siID"); }

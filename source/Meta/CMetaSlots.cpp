#include "Meta/CMetaSlots.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "Core/Assertions.h"
#include "Meta/SmallBlocks.h"

namespace {

constexpr std::size_t kPayload = sizeof(std::uint64_t), kTag = sizeof(std::uint16_t);
constexpr std::uint16_t kTag_KeyMask = 0x07FF, kTag_Mark = 0x8000;
constexpr int kTag_TypeShift = 11;

constexpr std::uint16_t KeyOf(std::uint16_t tag) noexcept { return tag & kTag_KeyMask; }
constexpr ValType TypeIn(std::uint16_t tag) noexcept { return static_cast<ValType>(tag >> kTag_TypeShift & 0xF); }
constexpr std::uint16_t MakeTag(std::uint16_t keyIndex, ValType type, bool markedB) noexcept {
    return static_cast<std::uint16_t>(keyIndex | static_cast<unsigned>(type) << kTag_TypeShift |
                                      (markedB ? kTag_Mark : 0U));
}

}   // namespace

CMetaSlots::~CMetaSlots() {
    for (std::size_t n = 0; n < i_countS; ++n) const CMetaValue last(TypeIn(Tags()[n]), Payloads()[n]);
    SmallBlocks::Give(i_blockP, (kPayload + kTag) * i_roomS);
}

std::uint64_t* CMetaSlots::Payloads() const noexcept { return reinterpret_cast<std::uint64_t*>(i_blockP); }
std::uint16_t* CMetaSlots::Tags() const noexcept {
    return reinterpret_cast<std::uint16_t*>(i_blockP + kPayload * i_roomS);
}

void CMetaSlots::Reserve(std::size_t countL) {
    countL = std::min<std::size_t>(countL, kMostKeys);
    if (countL <= i_roomS) return;
    auto* blockP = static_cast<std::byte*>(SmallBlocks::Take(countL * (kPayload + kTag)));
    if (i_countS != 0) {
        std::memcpy(blockP, i_blockP, kPayload * i_countS);
        std::memcpy(blockP + kPayload * countL, Tags(), kTag * i_countS);
    }
    SmallBlocks::Give(i_blockP, (kPayload + kTag) * i_roomS);
    i_blockP = blockP;
    i_roomS = static_cast<std::uint16_t>(countL);
}

std::size_t CMetaSlots::Place(std::uint16_t keyIndex) const noexcept {
    if (i_countS == 0) return 0;
    const std::uint16_t* const tagsP = Tags();
    std::size_t place = 0;   // a dozen neighbours in one cache line: quicker in a row than by halves
    while (place < i_countS && KeyOf(tagsP[place]) < keyIndex) ++place;
    return place;
}
bool CMetaSlots::IsAt(std::size_t place, std::uint16_t keyIndex) const noexcept {
    return place < i_countS && KeyOf(Tags()[place]) == keyIndex;
}

CMetaValue CMetaSlots::At(std::size_t place) const noexcept {
    CMetaValue inPlace(TypeIn(Tags()[place]), Payloads()[place]);
    CMetaValue copy = inPlace;
    inPlace.i_type = ValType::ValType_NONE;   // the place keeps its own count
    return copy;
}
std::uint16_t CMetaSlots::KeyAt(std::size_t place) const noexcept { return KeyOf(Tags()[place]); }

CMetaValue CMetaSlots::Get(std::uint16_t keyIndex) const noexcept {
    const std::size_t place = Place(keyIndex);
    return IsAt(place, keyIndex) ? At(place) : CMetaValue();
}

ValType CMetaSlots::TypeOf(std::uint16_t keyIndex) const noexcept {
    const std::size_t place = Place(keyIndex);
    return IsAt(place, keyIndex) ? TypeIn(Tags()[place]) : ValType::ValType_NONE;
}

void CMetaSlots::Put(std::uint16_t keyIndex, CMetaValue value) {
    if (!Assert(keyIndex < kMostKeys && value)) return;
    const std::size_t place = Place(keyIndex);
    if (IsAt(place, keyIndex)) {
        const CMetaValue old(TypeIn(Tags()[place]), Payloads()[place]);   // goes at the end
        Tags()[place] = MakeTag(keyIndex, value.i_type, (Tags()[place] & kTag_Mark) != 0);
        Payloads()[place] = value.i_bits;
    } else {
        constexpr std::size_t kStep = 4;
        if (i_countS == i_roomS) Reserve(i_countS + kStep);
        const std::size_t behindL = i_countS - place;
        std::memmove(Payloads() + place + 1, Payloads() + place, kPayload * behindL);
        std::memmove(Tags() + place + 1, Tags() + place, kTag * behindL);
        Tags()[place] = MakeTag(keyIndex, value.i_type, false);
        Payloads()[place] = value.i_bits;
        ++i_countS;
    }
    value.i_type = ValType::ValType_NONE;   // the place has the count now
}

CMetaValue CMetaSlots::Take(std::uint16_t keyIndex) {
    const std::size_t place = Place(keyIndex);
    if (!IsAt(place, keyIndex)) return {};
    CMetaValue taken(TypeIn(Tags()[place]), Payloads()[place]);
    const std::size_t behindL = i_countS - place - 1U;
    std::memmove(Payloads() + place, Payloads() + place + 1, kPayload * behindL);
    std::memmove(Tags() + place, Tags() + place + 1, kTag * behindL);
    --i_countS;
    return taken;
}

bool CMetaSlots::IsMarked(std::uint16_t keyIndex) const noexcept {
    const std::size_t place = Place(keyIndex);
    return IsAt(place, keyIndex) && (Tags()[place] & kTag_Mark) != 0;
}

void CMetaSlots::Mark(std::uint16_t keyIndex, bool markedB) noexcept {
    const std::size_t place = Place(keyIndex);
    if (!IsAt(place, keyIndex)) return;
    Tags()[place] = MakeTag(keyIndex, TypeIn(Tags()[place]), markedB);
}

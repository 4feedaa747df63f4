#include "Meta/CDataTraits.h"
#include "Meta/CDataTraits_Menus.h"
#include "Meta/CDataTraits_Numbers.h"

std::unique_ptr<CDataTraits> MakeTraits(const MetaKeyRow& row, std::uint16_t indexS, const TraitsSetup& setup) {
    switch (row.traits) {
        case TraitsClass::kPlain:
            break;
        case TraitsClass::kVocalChannelPop:
            return std::make_unique<CDataTraits_VocalChannelPop>(row, indexS, setup);
        case TraitsClass::kPitchPop:
            return std::make_unique<CDataTraits_PitchPop>(row, indexS, setup);
        case TraitsClass::kLabelPop:
            return std::make_unique<CDataTraits_LabelPop>(row, indexS, setup);
        case TraitsClass::kGraphicChannelsPop:
            return std::make_unique<CDataTraits_GraphicChannelsPop>(row, indexS, setup);
        case TraitsClass::kSinger_SMS_Carrier:
            return std::make_unique<CDataTraits_Singer_SMS_Carrier>(row, indexS, setup);
        case TraitsClass::kSinger_SMS_Region:
            return std::make_unique<CDataTraits_Singer_SMS_Region>(row, indexS, setup);
        case TraitsClass::kTrack:
            return std::make_unique<CDataTraits_Track>(row, indexS, setup);
        case TraitsClass::kSize:
            return std::make_unique<CDataTraits_Size>(row, indexS, setup);
        case TraitsClass::kStart:
            return std::make_unique<CDataTraits_Start>(row, indexS, setup);
        case TraitsClass::kDuration:
            return std::make_unique<CDataTraits_Duration>(row, indexS, setup);
        case TraitsClass::kTrimStart:
            return std::make_unique<CDataTraits_TrimStart>(row, indexS, setup);
        case TraitsClass::kTrimEnd:
            return std::make_unique<CDataTraits_TrimEnd>(row, indexS, setup);
    }
    return std::make_unique<CDataTraits>(row, indexS, setup);
}

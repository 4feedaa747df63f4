#include "Shell/SongColumns.h"

#include <QObject>

#include "Core/Localize.h"
#include "Meta/CDataTraits.h"

namespace {

constexpr MetaKey kSong[] = {"name"_key, "arts"_key, "albm"_key, "trak"_key,
                             "genr"_key, "cryr"_key, "drtn"_key, "stIx"_key};
constexpr MetaKey kMore[] = {"SUBg"_key, "rdtn"_key, "Lang"_key, "gndr"_key, "Keyc"_key, "KeCH"_key, "bpm "_key,
                             "ORyr"_key, "cBak"_key, "cmmt"_key, "cust"_key, "keyw"_key, "Bio "_key};
constexpr MetaKey kCredits[] = {"wrtr"_key, "swrt"_key, "cpsr"_key, "pbls"_key, "ORpb"_key, "cprt"_key};
constexpr MetaKey kPlaying[] = {"PICH"_key, "TMPO"_key, "volm"_key, "vChn"_key, "Slip"_key,
                                "gChn"_key, "Tsrt"_key, "Tend"_key, "aDur"_key, "tsng"_key};
constexpr MetaKey kMarks[] = {"colr"_key, "rtng"_key, "Duet"_key, "Expl"_key, "bVoc"_key,
                              "lVoc"_key, "sNSL"_key, "purc"_key, "Rcnt"_key};
constexpr MetaKey kFiles[] = {"Msng"_key, "Frmt"_key, "bRat"_key, "SIZE"_key, "Date"_key, "DAdd"_key, "soID"_key,
                              "Sfs0"_key, "Sfs1"_key, "Sfs2"_key, "Sfs5"_key, "Sf10"_key, "Sf11"_key};

constexpr SongColumnGroup kGroups[] = {{N_("Song"), kSong},       {N_("More of the Song"), kMore},
                                       {N_("Credits"), kCredits}, {N_("How It Plays"), kPlaying},
                                       {N_("Marks"), kMarks},     {N_("Files"), kFiles}};

}   // namespace

std::span<const SongColumnGroup> SongColumnGroups() noexcept { return kGroups; }

QString KeyTitle(const CDataTraits& traits) { return QObject::tr(traits.Title().CString()); }

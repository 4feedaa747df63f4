#pragma once
#include <cstdint>

#include "Core/OSType.h"

/** What kind of value a key has. */
enum class ValType : std::uint8_t {
    ValType_NONE = 0,   // an unknown key: no value can be made for it
    ValType_STRING = 1,
    ValType_BOOL = 2,
    ValType_INTEGER = 3,   // signed 32-bit
    ValType_FLOAT = 4,
    ValType_DATE = 5,
    ValType_CFDATA = 6,   // a block of bytes; no key of the table declares it
    ValType_SONGFILE = 7,
    ValType_DICT = 8
};

/** A check box. Mix is that of a selection of unlike rows; it is never stored. */
enum class BoolValueType : std::uint8_t { kFalse = 0, kTrue = 1, kMix = 2 };

// Bits of a key.
inline constexpr unsigned kKeyFlag_Editable = 0x001;
inline constexpr unsigned kKeyFlag_Column = 0x002;   // offered as a column and for searching
inline constexpr unsigned kKeyFlag_Popup = 0x004;    // chosen from a menu; sorted by the menu's text in the browser
inline constexpr unsigned kKeyFlag_NoPull = 0x010;   // reading it never reads the song's file
inline constexpr unsigned kKeyFlag_Tagged = 0x020;   // filled from tags; part of the mask in "cMfl"
inline constexpr unsigned kKeyFlag_NormalizeText = 0x040;   // its texts are normalised as titles
inline constexpr unsigned kKeyFlag_NoSavedSort = 0x080;     // no list may be saved as sorted by it
inline constexpr unsigned kKeyFlag_Hidden = 0x100;          // no column, and not in a copied dictionary
inline constexpr unsigned kKeyFlag_Dict = 0x200;
inline constexpr unsigned kKeyFlag_NotIndexed = 0x400;   // not in the search tables
inline constexpr unsigned kKeyFlag_LongText = 0x800;

// Bits of a browser column.
inline constexpr std::uint32_t kColumn_Mutable = 0x1;
inline constexpr std::uint32_t kColumn_RelativeDate = 0x100;
inline constexpr std::uint32_t kColumn_Usual = 0x70000;   // movable, sortable, selects the row

// How the browser shows a value.
inline constexpr OSType kProperty_Text = FourCC("text");
inline constexpr OSType kProperty_CheckBox = FourCC("chbx");
inline constexpr OSType kProperty_Date = FourCC("date");
inline constexpr OSType kProperty_Popup = FourCC("menu");
inline constexpr OSType kProperty_Custom = 0x3F3F3F3F;   // "????", drawn by the program

enum class Justification : std::int16_t { kDefault = 0, kRight = -1, kLeft = -2 };

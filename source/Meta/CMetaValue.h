#pragma once
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "Meta/CMetaSongFile.h"
#include "Meta/CMetaText.h"
#include "Meta/MetaTypes.h"
#include "Values/CCFDictionary.h"

/** One value of a song, a singer or a row: 16 bytes, and a counted box for what does not fit. It never changes, so a
    copy is a count. The kind is that of the value; reading it as another kind answers that kind's nothing.
    Threads  any; a CMetaValue itself is a value. */
class CMetaValue {
public:
    CMetaValue() = default;   // no value
    explicit CMetaValue(CMetaText text) noexcept : i_bits(text.Detach()), i_type(ValType::ValType_STRING) {}
    explicit CMetaValue(BoolValueType value) noexcept
        : i_bits(static_cast<std::uint64_t>(value)), i_type(ValType::ValType_BOOL) {}
    explicit CMetaValue(std::int32_t value) noexcept
        : i_bits(static_cast<std::uint32_t>(value)), i_type(ValType::ValType_INTEGER) {}
    explicit CMetaValue(double value) noexcept;
    explicit CMetaValue(CFDate value) noexcept;
    explicit CMetaValue(const CCFDictionary& value);
    explicit CMetaValue(const CFData& value);
    explicit CMetaValue(const CMetaSongFile& value);
    /** A file of which only the path is known: the road of the load. */
    [[nodiscard]] static CMetaValue File(SDB_SongFileStatus status, std::string_view path);

    CMetaValue(const CMetaValue& other) noexcept;
    CMetaValue(CMetaValue&& other) noexcept
        : i_bits(std::exchange(other.i_bits, 0)), i_type(std::exchange(other.i_type, ValType::ValType_NONE)) {}
    CMetaValue& operator=(CMetaValue other) noexcept {
        std::swap(i_bits, other.i_bits);
        std::swap(i_type, other.i_type);
        return *this;
    }
    ~CMetaValue();

    [[nodiscard]] ValType Type() const noexcept { return i_type; }
    explicit operator bool() const noexcept { return i_type != ValType::ValType_NONE; }

    /** The text; good for as long as a value with this text lives. */
    [[nodiscard]] std::string_view Text() const noexcept;
    [[nodiscard]] BoolValueType Bool() const noexcept;
    [[nodiscard]] std::int32_t Integer() const noexcept;
    [[nodiscard]] double Float() const noexcept;
    [[nodiscard]] CFDate Date() const noexcept;
    [[nodiscard]] CCFDictionary Dictionary() const;
    [[nodiscard]] CFData Data() const;
    [[nodiscard]] CMetaSongFile SongFile() const;
    [[nodiscard]] SDB_SongFileStatus FileStatus() const noexcept;
    /** The path of a file value, as bytes. */
    [[nodiscard]] std::string FilePath() const;

    /** Same kind, and before `other` in the order of that kind: texts by CCollation::User, checked boxes before mixed
        ones before empty ones, files by path. */
    [[nodiscard]] bool IsLessThan(const CMetaValue& other) const;
    /** Same kind, same place in that order. */
    [[nodiscard]] bool IsEqual(const CMetaValue& other) const;
    /** Same kind, same content to the last byte. */
    friend bool operator==(const CMetaValue& a, const CMetaValue& b);

private:
    friend class CMetaSlots;
    CMetaValue(ValType type, std::uint64_t bits) noexcept : i_bits(bits), i_type(type) {}

    std::uint64_t i_bits = 0;   // the value, or the pointer to its box
    ValType i_type = ValType::ValType_NONE;
};

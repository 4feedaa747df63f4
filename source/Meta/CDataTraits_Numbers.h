#pragma once
#include "Meta/CDataTraits.h"

/** The keys whose integers people read in a form of their own. */

/** No number for track 0. */
class CDataTraits_Track final : public CDataTraits {
public:
    using CDataTraits::CDataTraits;
    [[nodiscard]] SuperString IntegerToDisplay(long value) const override;
};

/** Bytes; nothing for none. */
class CDataTraits_Size final : public CDataTraits {
public:
    using CDataTraits::CDataTraits;
    [[nodiscard]] SuperString IntegerToDisplay(long value) const override;
};

/** CD blocks of 1/75 s: "00:2.000". */
class CDataTraits_Start final : public CDataTraits {
public:
    using CDataTraits::CDataTraits;
    [[nodiscard]] SuperString IntegerToDisplay(long value) const override;
};

/** 300ths of a second: "3:05"; nothing while it is not known. */
class CDataTraits_Duration final : public CDataTraits {
public:
    using CDataTraits::CDataTraits;
    [[nodiscard]] SuperString IntegerToDisplay(long value) const override;
};

/** 300ths of a second, typed and shown as a time code; nothing for none. */
class CDataTraits_TimeCode : public CDataTraits {
public:
    using CDataTraits::CDataTraits;
    /** A time code gives its 300ths; another text stays. */
    [[nodiscard]] SuperString ToDisplayFromString(const SuperString& text) const override;
    [[nodiscard]] SuperString IntegerToDisplay(long value) const override;
};
class CDataTraits_TrimStart final : public CDataTraits_TimeCode {
    using CDataTraits_TimeCode::CDataTraits_TimeCode;
};
class CDataTraits_TrimEnd final : public CDataTraits_TimeCode {
    using CDataTraits_TimeCode::CDataTraits_TimeCode;
};

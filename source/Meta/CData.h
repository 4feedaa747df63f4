#pragma once
#include <atomic>
#include <mutex>

#include "Core/Ref.h"
#include "Meta/CMetaValue.h"
#include "Meta/MetaKey.h"

class CMeta;
class CMetaStripe;

/** A value with an identity: what a caller gets who keeps a value. As long as somebody holds it, everybody who asks its
    owner for this key gets the same object, and a change through either is seen by both; when the last one lets go, it
    goes, and the value stays with its owner. An owner that loses the value, or dies, leaves the last one in the object.
    Threads  any. The lock is that of the owner while there is one, else the object's own: map first, value second. Do
             not touch one while holding the lock of another CMeta. */
class CData : public RefCounted {
public:
    using enum ValType;

    /** A value of its own, without an owner. */
    [[nodiscard]] static Ref<CData> Make(MetaKey key, CMetaValue value);
    ~CData() override;

    [[nodiscard]] MetaKey Key() const noexcept { return i_key; }
    /** The kind never changes. */
    [[nodiscard]] ValType Type() const noexcept { return i_type; }
    /** Null when there is none any more. A pointer to compare with; who uses it knows by other means that it lives. */
    [[nodiscard]] CMeta* GetOwner() const;
    [[nodiscard]] CMetaValue Value() const;

    /** False when the other one is of another kind. */
    [[nodiscard]] bool IsLessThan(const CData& other) const;
    [[nodiscard]] bool IsEqual(const CData& other) const;
    [[nodiscard]] bool IsSameValue(const CMetaValue& value) const;
    /** True when it changed. With an owner it is the owner's SetValue, so a default takes the value out of the owner
        and leaves it here. A value of another kind is asserted and refused. */
    bool Set(const CMetaValue& value);
    bool CopyFrom(const CData* otherP);

    [[nodiscard]] SuperString GetDisplayString() const;

protected:
    CData(MetaKey key, CMetaValue value);

private:
    friend class CMeta;
    friend class CMetaStripe;
    class Guard;
    [[nodiscard]] bool Hold() const noexcept { return TryRetain(); }

    const MetaKey i_key;
    const ValType i_type;
    mutable std::recursive_mutex i_ownLock;
    std::atomic<std::recursive_mutex*> i_lockP;   // the owner's, or i_ownLock; stored by who holds it
    // Guarded by the mutex that i_lockP names:
    CMeta* i_ownerP = nullptr;
    CMetaStripe* i_stripeP = nullptr;
    std::uint16_t i_keyIndex = 0;
    CMetaValue i_value;   // when there is no owner
};

/** A CData of a known kind. */
template <class T, ValType kType>
class CDataT final : public CData {
public:
    CDataT(MetaKey key, const T& value) : CData(key, ToValue(value)) {}
    [[nodiscard]] T Get() const { return FromValue(Value()); }
    bool Set(const T& value) { return CData::Set(ToValue(value)); }
    using CData::Set;

private:
    friend class CData;
    CDataT(MetaKey key, CMetaValue value) : CData(key, std::move(value)) {}
    static CMetaValue ToValue(const T& value) {
        if constexpr (kType == ValType::ValType_STRING)
            return CMetaValue(CMetaText::Of(value));
        else
            return CMetaValue(value);
    }
    static T FromValue(const CMetaValue& value) {
        if constexpr (kType == ValType::ValType_STRING)
            return T(value.Text());
        else if constexpr (kType == ValType::ValType_BOOL)
            return value.Bool();
        else if constexpr (kType == ValType::ValType_INTEGER)
            return value.Integer();
        else if constexpr (kType == ValType::ValType_FLOAT)
            return value.Float();
        else if constexpr (kType == ValType::ValType_DATE)
            return value.Date();
        else if constexpr (kType == ValType::ValType_DICT)
            return value.Dictionary();
        else if constexpr (kType == ValType::ValType_CFDATA)
            return value.Data();
        else
            return value.SongFile();
    }
};
using CData_String = CDataT<SuperString, ValType::ValType_STRING>;
using CData_Bool = CDataT<BoolValueType, ValType::ValType_BOOL>;
using CData_Integer = CDataT<std::int32_t, ValType::ValType_INTEGER>;
using CData_Float = CDataT<double, ValType::ValType_FLOAT>;
using CData_Date = CDataT<CFDate, ValType::ValType_DATE>;
using CData_Dict = CDataT<CCFDictionary, ValType::ValType_DICT>;
using CData_CFData = CDataT<CFData, ValType::ValType_CFDATA>;
using CData_SongFile = CDataT<CMetaSongFile, ValType::ValType_SONGFILE>;

/** `dataRef` as that kind; null when it is another. */
template <class Kind>
[[nodiscard]] Ref<Kind> DataAs(const Ref<CData>& dataRef) {
    return Ref<Kind>(dynamic_cast<Kind*>(dataRef.Get()));
}

#include "Meta/CData.h"

#include "Core/Assertions.h"
#include "Meta/CMeta.h"
#include "Meta/CMetaManager.h"

/** The lock of a value, whoever's it is at the moment. */
class CData::Guard {
public:
    explicit Guard(const CData& data) {
        for (;;) {
            i_lockP = data.i_lockP.load(std::memory_order_acquire);
            i_lockP->lock();
            if (data.i_lockP.load(std::memory_order_acquire) == i_lockP) return;
            i_lockP->unlock();   // it found or lost its owner while we waited
        }
    }
    ~Guard() { i_lockP->unlock(); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    std::recursive_mutex* i_lockP;
};

Ref<CData> CData::Make(MetaKey key, CMetaValue value) {
    switch (value.Type()) {
        case ValType_STRING:
            return Ref<CData>(new CData_String(key, std::move(value)));
        case ValType_BOOL:
            return Ref<CData>(new CData_Bool(key, std::move(value)));
        case ValType_INTEGER:
            return Ref<CData>(new CData_Integer(key, std::move(value)));
        case ValType_FLOAT:
            return Ref<CData>(new CData_Float(key, std::move(value)));
        case ValType_DATE:
            return Ref<CData>(new CData_Date(key, std::move(value)));
        case ValType_CFDATA:
            return Ref<CData>(new CData_CFData(key, std::move(value)));
        case ValType_SONGFILE:
            return Ref<CData>(new CData_SongFile(key, std::move(value)));
        case ValType_DICT:
            return Ref<CData>(new CData_Dict(key, std::move(value)));
        case ValType_NONE:
            break;
    }
    return nullptr;
}

CData::CData(MetaKey key, CMetaValue value)
    : i_key(key), i_type(value.Type()), i_lockP(&i_ownLock), i_value(std::move(value)) {
    (void)Assert(key != CM_Key_NONE);
}

CData::~CData() {
    (void)AssertWords(RetainCount() == 0, "i_retainCountL == 0");
    // Without a lock: the table of the stripe gives nobody a reference any more, and only a holder changes the owner.
    if (i_ownerP != nullptr) i_stripeP->Remove(i_ownerP, i_keyIndex, this);
}

CMeta* CData::GetOwner() const {
    const Guard guard(*this);
    return i_ownerP;
}

CMetaValue CData::Value() const {
    const Guard guard(*this);
    return i_ownerP == nullptr ? i_value : i_ownerP->i_slots.Get(i_keyIndex);
}

bool CData::IsLessThan(const CData& other) const { return Value().IsLessThan(other.Value()); }
bool CData::IsEqual(const CData& other) const { return Value().IsEqual(other.Value()); }
bool CData::IsSameValue(const CMetaValue& value) const { return Value() == value; }

bool CData::Set(const CMetaValue& value) {
    if (!AssertWords(value.Type() == i_type, "value.Type() == i_type")) return false;
    const Guard guard(*this);
    if (i_ownerP != nullptr) return i_ownerP->SetValue(i_key, value);
    if (i_value == value) return false;
    i_value = value;
    return true;
}

bool CData::CopyFrom(const CData* otherP) { return Assert(otherP) && Set(otherP->Value()); }

SuperString CData::GetDisplayString() const { return MetaManager().GetTraits(i_key).Display(Value()); }

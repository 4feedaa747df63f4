#include "Meta/CMeta.h"

#include "Core/Assertions.h"
#include "Meta/CMeta_PLItem.h"
#include "Meta/CMetaManager.h"

CMeta::CMeta(MetaLevel level) : i_manager(MetaManager()), i_serial(i_manager.Register(*this)), i_level(level) {}

CMeta::~CMeta() {
    Retire();
    i_manager.Unregister(i_serial);
}

void CMeta::Retire() noexcept {
    const MetaLock lock(*this);
    if (i_retiredB) return;
    i_retiredB = true;
    i_enabledB = false;
    for (std::size_t n = 0; n < i_slots.Count(); ++n) {
        const std::uint16_t keyIndex = i_slots.KeyAt(n);
        if (i_slots.IsMarked(keyIndex)) LetGo(keyIndex, i_slots.At(n));
    }
}

CMetaValue CMeta::Stored(MetaKey key) const {
    const std::uint16_t keyIndex = i_manager.GetTraits(key).Index();
    const MetaLock lock(*this);
    return i_slots.Get(keyIndex);
}

CMetaValue CMeta::Value(MetaKey key, ValueMode mode) {
    CDataTraits& traits = i_manager.GetTraits(key);
    const MetaLock lock(*this);
    CMetaValue value = i_slots.Get(traits.Index());
    if (value || mode == ValueMode::kStored || (mode == ValueMode::kMakeIfAllowed && !i_canCreateB)) return value;
    value = MakeValue(key);
    if (!value || !AssertWords(value.Type() == traits.Type(), "made value of the key's kind")) return {};
    if (i_enabledB && KeepsMade(key) && !traits.IsDefault(value)) Store(traits, value, false);
    return value;
}

std::vector<MetaEntry> CMeta::AllStored() const {
    const MetaLock lock(*this);
    std::vector<MetaEntry> entries;
    entries.reserve(i_slots.Count());
    for (std::size_t n = 0; n < i_slots.Count(); ++n)
        entries.push_back({i_manager.TraitsAt(i_slots.KeyAt(n)).Key(), i_slots.At(n)});
    return entries;
}

void CMeta::Load(std::span<MetaEntry> entries) {
    const MetaLock lock(*this);
    i_slots.Reserve(i_slots.Count() + entries.size());
    for (MetaEntry& entry : entries) {
        CDataTraits& traits = i_manager.GetTraits(entry.key);
        if (!entry.value) continue;
        if (!AssertWords(entry.value.Type() == traits.Type() || traits.Discover(entry.value.Type()),
                         "loaded value of the key's kind"))
            continue;
        if (entry.value.Type() == ValType::ValType_INTEGER)
            entry.value = CMetaValue(traits.Usable(entry.value.Integer()));
        const bool defaultB = traits.IsDefault(entry.value);
        if (!defaultB)
            i_slots.Put(traits.Index(), std::move(entry.value));
        else if (i_slots.TypeOf(traits.Index()) != ValType::ValType_NONE)
            LetGo(traits.Index(), i_slots.Take(traits.Index()));
    }
}

// ---- Objects ----

Ref<CData> CMeta::GetRetainedValue(MetaKey key, ValueMode mode, WillRelease release) {
    if (!Assert(key != CM_Key_NONE)) return nullptr;
    const CDataTraits& traits = i_manager.GetTraits(key);
    const MetaLock lock(*this);
    const CMetaValue value = Value(key, mode);
    if (!value) return nullptr;
    // A default that was made, or what only follows from others, is not stored, and so nobody's.
    const bool storedB = i_slots.TypeOf(traits.Index()) != ValType::ValType_NONE && !i_retiredB;
    Ref<CData> dataRef = storedB ? Handle(traits, value) : CData::Make(key, value);
    if (release == WillRelease::kYes) (void)AssertWords(dataRef->RetainCount() <= 2, "dataP->RetainCount() <= 2");
    return dataRef;
}

Ref<CData> CMeta::Handle(const CDataTraits& traits, const CMetaValue& value) {
    CMetaStripe& stripe = CMetaStripe::Of(i_level, i_serial);
    if (i_slots.IsMarked(traits.Index()))
        if (Ref<CData> dataRef = stripe.Find(this, traits.Index())) {
            (void)AssertWords(dataRef->i_ownerP == this, "dataP->GetOwner() == this");
            return dataRef;
        }
    Ref<CData> dataRef = CData::Make(traits.Key(), value);
    Attach(traits, *dataRef);
    return dataRef;
}

void CMeta::Attach(const CDataTraits& traits, CData& data) {
    CMetaStripe& stripe = CMetaStripe::Of(i_level, i_serial);
    data.i_ownerP = this;
    data.i_stripeP = &stripe;
    data.i_keyIndex = traits.Index();
    data.i_value = {};
    data.i_lockP.store(&stripe.Lock(), std::memory_order_release);
    stripe.Add(this, traits.Index(), &data);
    i_slots.Mark(traits.Index(), true);
}

void CMeta::LetGo(std::uint16_t keyIndex, CMetaValue value) noexcept {
    CMetaStripe& stripe = CMetaStripe::Of(i_level, i_serial);
    const Ref<CData> dataRef = stripe.Find(this, keyIndex);
    i_slots.Mark(keyIndex, false);
    if (!dataRef) return;
    stripe.Remove(this, keyIndex, dataRef.Get());
    dataRef->i_value = std::move(value);
    dataRef->i_ownerP = nullptr;
    dataRef->i_lockP.store(&dataRef->i_ownLock, std::memory_order_release);   // the last: now others may come in
}

bool CMeta::SetValue(MetaKey key, const Ref<CData>& dataRef, bool forceB) {
    if (!Assert(key != CM_Key_NONE) || !Assert(dataRef) || !Assert(dataRef->Key() == key)) return false;
    CMeta* const ownerP = dataRef->GetOwner();
    if (!AssertWords(ownerP == nullptr || ownerP == this, "dataP->GetOwner() == this")) return false;
    const CMetaValue value = dataRef->Value();   // before our lock: its own comes after it
    CDataTraits& traits = i_manager.GetTraits(key);
    const MetaLock lock(*this);
    const bool hadB = i_slots.TypeOf(traits.Index()) != ValType::ValType_NONE;
    const bool changedB = SetValue(key, value, forceB);
    if (hadB || !changedB || i_slots.TypeOf(traits.Index()) == ValType::ValType_NONE) return changedB;
    if (i_slots.IsMarked(traits.Index())) return changedB;   // the change hook asked for one: that one is it
    const std::lock_guard own(dataRef->i_ownLock);
    // Still nobody's? It may have gone elsewhere between the look and the lock; then we keep the value alone.
    if (dataRef->i_lockP.load(std::memory_order_acquire) == &dataRef->i_ownLock) Attach(traits, *dataRef);
    return changedB;
}

// ---- The store ----

bool CMeta::SetValue(MetaKey key, CMetaValue value, bool forceB) {
    if (!Assert(key != CM_Key_NONE)) return false;
    CDataTraits& traits = i_manager.GetTraits(key);
    const MetaLock lock(*this);
    if (!i_enabledB) return false;
    if (value &&
        !AssertWords(value.Type() == traits.Type() || traits.Discover(value.Type()), "value of the key's kind"))
        return false;
    return Store(traits, std::move(value), forceB);
}

bool CMeta::Store(CDataTraits& traits, CMetaValue value, bool forceB) {
    // No default is ever stored, but where it stands against another value: a row's own pitch of 0 is not its song's of 3.
    const bool ofRowB = i_level == MetaLevel::kRow && value && CMeta_PLItem::IsTuningKey(traits.Key());
    if (!ofRowB && traits.IsDefault(value)) return Remove(traits);
    const std::uint16_t keyIndex = traits.Index();
    if (!forceB && i_slots.TypeOf(keyIndex) == value.Type() && i_slots.Get(keyIndex) == value) return false;
    i_slots.Put(keyIndex, value);   // in the same place: an object of it sees the new value
    Changed(traits.Key(), value);
    return true;
}

bool CMeta::RemoveValue(MetaKey key) {
    if (!Assert(key != CM_Key_NONE)) return false;
    CDataTraits& traits = i_manager.GetTraits(key);
    const MetaLock lock(*this);
    return i_enabledB && Remove(traits);
}

bool CMeta::Remove(const CDataTraits& traits) {
    const bool markedB = i_slots.IsMarked(traits.Index());
    CMetaValue value = i_slots.Take(traits.Index());
    if (!value) return false;
    if (markedB) LetGo(traits.Index(), std::move(value));
    Changed(traits.Key(), {});
    return true;
}

void CMeta::Changed(MetaKey key, const CMetaValue& value) {
    i_dirtyB = true;
    if (!i_changingB) OnChanged(key, value);
}

// ---- Hooks and switches ----

CMetaValue CMeta::MakeValue(MetaKey) { return {}; }
void CMeta::OnChanged(MetaKey, const CMetaValue&) {}
void CMeta::CheckSetter(MetaKey key) const { (void)Assert(key != CM_Key_NONE); }

void CMeta::AssertNotIdentity(MetaKey key) {
    (void)Assert(key != CM_Key_SONG_ID);
    (void)Assert(key != CM_Key_SORT_INDEX);
    (void)Assert(key != CM_Key_PLAYLIST_ID);
}

void CMeta::SetEnabled(bool enabledB) {
    const MetaLock lock(*this);
    i_enabledB = enabledB && !i_retiredB;
}
bool CMeta::IsEnabled() const {
    const MetaLock lock(*this);
    return i_enabledB;
}
void CMeta::SetCanCreate(bool canCreateB) {
    const MetaLock lock(*this);
    i_canCreateB = canCreateB;
}
void CMeta::SetDirty(bool dirtyB) {
    const MetaLock lock(*this);
    i_dirtyB = dirtyB;
}
bool CMeta::IsDirty() const {
    const MetaLock lock(*this);
    return i_dirtyB;
}

CMeta::QuietChanges::QuietChanges(CMeta& meta) : i_meta(meta) {
    const MetaLock lock(meta);
    i_wasB = meta.i_changingB;
    meta.i_changingB = true;
}
CMeta::QuietChanges::~QuietChanges() {
    const MetaLock lock(i_meta);
    i_meta.i_changingB = i_wasB;
}

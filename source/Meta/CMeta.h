#pragma once
#include <cstdint>
#include <span>
#include <vector>

#include "Meta/CData.h"
#include "Meta/CDataTraits.h"
#include "Meta/CMetaSlots.h"
#include "Meta/CMetaStripes.h"
#include "Meta/MetaKey.h"
#include "Values/CCFDictionary.h"

class CMetaManager;

/** What asking for a value may bring about. */
enum class ValueMode : std::uint8_t {
    kStored = 0,          // a stored value only
    kMake = 1,            // MakeValue when there is none
    kMakeIfAllowed = 2,   // the same, unless making is switched off (SetCanCreate)
};
/** The caller drops the object right after, which lets the debugging eye see who keeps one. */
enum class WillRelease : bool { kNo, kYes };

/** The common fields of a file's tags. */
struct MetaTags {
    SuperString name, artist, album, genre, comment, rendition, copyright;
    std::int32_t trackL = 0, yearL = 0;
};

/** By which keys two objects are compared. */
struct MetaSortKey {
    MetaKey key;
    bool ascendingB = true;
};
struct CMetaSortContext {
    std::vector<MetaSortKey> keys;   // none: by "piIx"
    std::size_t index = 0;           // of the key in use
};

struct MetaEntry {
    MetaKey key;
    CMetaValue value;
};

/** Everything that has metadata: a song, a singer, a row of a list, a file's tags. A map from key to value in which no
    value equal to its key's default is ever stored.
    Threads  any. One lock of a pool (MetaLock), held in each operation and over the change hook; order in MetaLock.
    Owner    whoever made it; a value that somebody retains survives it.
    Errors   a fault of the caller (no key, a value of a wrong kind) is asserted, and nothing is changed. */
class CMeta {
public:
    explicit CMeta(MetaLevel level = MetaLevel::kSong);
    virtual ~CMeta();
    CMeta(const CMeta&) = delete;
    CMeta& operator=(const CMeta&) = delete;

    /** A number of its own in this run. */
    [[nodiscard]] std::uint32_t Serial() const noexcept { return i_serial; }
    [[nodiscard]] MetaLevel Level() const noexcept { return i_level; }

    // ---- The light road: values come out as copies, without an object. ----
    /** What is stored; no value when there is none. */
    [[nodiscard]] CMetaValue Stored(MetaKey key) const;
    [[nodiscard]] bool Has(MetaKey key) const { return static_cast<bool>(Stored(key)); }
    /** The value, made and kept when there is none and `mode` allows it. */
    [[nodiscard]] CMetaValue Value(MetaKey key, ValueMode mode = ValueMode::kMake);
    /** All that is stored, in no particular order. */
    [[nodiscard]] std::vector<MetaEntry> AllStored() const;
    /** Values from the library's files: stored as they are (integers made legal, defaults left out), without the change
        hook and without a mark of dirt. `entries` are moved from. */
    void Load(std::span<MetaEntry> entries);

    // ---- Values with an identity. ----
    /** Null when there is none and none could be made. A value that is made and not kept comes without an owner. */
    [[nodiscard]] Ref<CData> GetRetainedValue(MetaKey key, ValueMode mode = ValueMode::kStored,
                                              WillRelease release = WillRelease::kNo);
    /** Puts `dataRef` in the place of its key when that is empty; else copies its value into the one that is there, so
        that its identity stays. An object with another owner is asserted and refused. True when something changed. */
    bool SetValue(MetaKey key, const Ref<CData>& dataRef, bool forceB = false);

    // ---- Typed reading: the default when nothing is stored and nothing is made. ----
    [[nodiscard]] SuperString GetString(MetaKey key);
    [[nodiscard]] virtual std::int32_t GetInteger(MetaKey key);
    [[nodiscard]] double GetFloat(MetaKey key);
    [[nodiscard]] BoolValueType GetBool(MetaKey key);
    [[nodiscard]] std::optional<CFDate> GetDate(MetaKey key);
    [[nodiscard]] CCFDictionary GetDict(MetaKey key);
    [[nodiscard]] CFData GetByteBlock(MetaKey key);
    /** Status SDB_SongFileStatus_NONE when there is no file. */
    [[nodiscard]] CMetaSongFile GetSongFile(MetaKey key);
    /** As people read it, whatever the kind. */
    [[nodiscard]] SuperString GetDisplayString(MetaKey key);

    // ---- Typed writing: true when the stored state changed; nothing happens while not enabled. ----
    /** Empty and "--" clear. A text for a number's key is read as a number; what begins with none is refused. */
    bool SetString(MetaKey key, std::string_view text);
    bool SetInteger(MetaKey key, std::int64_t value);
    bool SetFloat(MetaKey key, double value);
    bool SetBool(MetaKey key, BoolValueType value);
    bool SetBool(MetaKey key, bool valueB) {
        return SetBool(key, valueB ? BoolValueType::kTrue : BoolValueType::kFalse);
    }
    bool SetDate(MetaKey key, CFDate value);
    bool SetDict(MetaKey key, const CCFDictionary& value);
    bool SetByteBlock(MetaKey key, const CFData& value);
    bool SetSongFile(MetaKey key, const CMetaSongFile& value);
    /** Below all of these. With `forceB` it counts as a change even if it is none. No value clears. */
    bool SetValue(MetaKey key, CMetaValue value, bool forceB = false);
    /** The value leaves, an object of it keeps it. True when there was one. */
    bool RemoveValue(MetaKey key);

    // ---- Switches ----
    void SetEnabled(bool enabledB);
    [[nodiscard]] bool IsEnabled() const;
    void SetCanCreate(bool canCreateB);
    void SetDirty(bool dirtyB);
    [[nodiscard]] bool IsDirty() const;
    /** While one lives, changes do not reach the change hook. */
    class QuietChanges {
    public:
        explicit QuietChanges(CMeta& meta);
        ~QuietChanges();
        QuietChanges(const QuietChanges&) = delete;
        QuietChanges& operator=(const QuietChanges&) = delete;

    private:
        CMeta& i_meta;
        bool i_wasB;
    };

    // ---- Whole records ----
    /** True when any field has content. */
    bool GetBasics(MetaTags& tags);
    void SetBasics(const MetaTags& tags);
    enum class FileSlots : bool { kWithout, kWith };
    enum class HiddenKeys : bool { kWithout, kWith };
    /** All that is stored, but for hidden keys that are not asked for; file places as file references when asked for,
        hidden ones too, since what is cached must be found again. A file place that has no form is left out and logged. */
    [[nodiscard]] CCFDictionary ToDictionary(FileSlots files = FileSlots::kWithout,
                                             HiddenKeys hidden = HiddenKeys::kWithout) const;
    /** Of these entries, whatever they are. */
    [[nodiscard]] static CCFDictionary MakeDictionary(std::span<const MetaEntry> entries);
    /** Takes all values of the dictionary that have a form here, each by its setter; "Illegal key type: " is logged for
        the others. A key that is not in the table gets the kind of its value. Keys not in the dictionary stay. */
    void FromDictionary(const CCFDictionary& dictionary);

    // ---- Order ----
    /** -1, 0, 1 by the keys of the context, begun at the first, then by "piIx". No value sorts before any. */
    [[nodiscard]] int CompareRecursive(CMeta& other, CMetaSortContext& context);
    /** The same from the context's present key on. */
    [[nodiscard]] virtual int Compare(CMeta& other, CMetaSortContext& context);

protected:
    /** A value that is worked out, for a key without a stored one; none in the base. Under this object's lock: no I/O. */
    [[nodiscard]] virtual CMetaValue MakeValue(MetaKey key);
    /** Whether a made value becomes a stored one. One that follows from others must not: it would be saved, and stay
        when they change. */
    [[nodiscard]] virtual bool KeepsMade(MetaKey /*key*/) const { return true; }
    /** The stored value of a key is another one now (none: removed). Under this object's lock: note it, return. */
    virtual void OnChanged(MetaKey key, const CMetaValue& value);
    /** Called by the typed setters: asserts that the key may be set so. A subclass adds its own (AssertNotIdentity). */
    virtual void CheckSetter(MetaKey key) const;
    /** Asserts that it is none of the keys that are told, never set: song id, playlist id, sort index. */
    static void AssertNotIdentity(MetaKey key);
    /** Whether a dictionary may bring a value of this key; one of another is passed over. The base: all but those that
        are told, never set. */
    [[nodiscard]] virtual bool Takes(MetaKey key) const;
    /** A file out of a dictionary; the base stores it as a reference. */
    virtual bool TakeFile(MetaKey key, const CFileRef& ref);
    /** The first act of a subclass's destructor: from here on no object reaches the hooks. */
    void Retire() noexcept;

    [[nodiscard]] CMetaManager& Manager() const noexcept { return i_manager; }

private:
    friend class CData;
    friend class MetaLock;
    /** Marks dirty and tells the hook. Lock held. */
    void Changed(MetaKey key, const CMetaValue& value);
    bool Store(CDataTraits& traits, CMetaValue value, bool forceB);
    bool Remove(const CDataTraits& traits);
    /** Leaves the value with the object of the place, if there is one. Lock held. */
    void LetGo(std::uint16_t keyIndex, CMetaValue value) noexcept;
    [[nodiscard]] Ref<CData> Handle(const CDataTraits& traits, const CMetaValue& value);
    void Attach(const CDataTraits& traits, CData& data);
    [[nodiscard]] bool MaySet(MetaKey key) const;
    bool TakeEntry(CDataTraits& traits, const CCFValue& value);

    CMetaManager& i_manager;
    CMetaSlots i_slots;
    std::uint32_t i_serial;
    const MetaLevel i_level;
    bool i_enabledB : 1 = true;
    bool i_canCreateB : 1 = true;
    bool i_dirtyB : 1 = false;
    bool i_changingB : 1 = false;
    bool i_retiredB : 1 = false;
};

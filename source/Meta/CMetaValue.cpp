#include "Meta/CMetaValue.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <memory>

#include "Meta/CCollation.h"
#include "Meta/SmallBlocks.h"

namespace {

/** The content of a value that does not fit in eight bytes. */
template <class T>
struct Counted {
    explicit Counted(T content) : value(std::move(content)) {}
    std::atomic<std::uint32_t> references{1};
    const T value;
};

/** A file, in one allocation: the folder's path is shared with all files in it, the name lies behind the box. */
class FileBox {
public:
    static FileBox* Make(SDB_SongFileStatus status, std::string_view path,
                         std::unique_ptr<const FileIdentity> identity = nullptr) {
        const std::size_t slash = path.rfind('/');
        const std::size_t nameAt = slash == std::string_view::npos ? 0 : slash + 1;
        return new (SmallBlocks::Take(sizeof(FileBox) + path.size() - nameAt))
            FileBox(status, path, nameAt, std::move(identity));
    }
    void Retain() noexcept { i_references.fetch_add(1, std::memory_order_relaxed); }
    void Release() noexcept {
        if (i_references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
        const std::size_t bytesL = sizeof(FileBox) + i_nameL;
        this->~FileBox();
        SmallBlocks::Give(this, bytesL);
    }
    [[nodiscard]] SDB_SongFileStatus Status() const noexcept { return i_status; }
    [[nodiscard]] std::string Path() const { return std::string(i_folder.View()).append(Name()); }
    friend bool operator==(const FileBox& a, const FileBox& b) {
        return a.i_status == b.i_status && a.i_folder == b.i_folder && a.Name() == b.Name() &&
               (a.i_identity == nullptr) == (b.i_identity == nullptr) &&
               (a.i_identity == nullptr || *a.i_identity == *b.i_identity);
    }
    [[nodiscard]] const FileIdentity* Identity() const noexcept { return i_identity.get(); }

private:
    static constexpr unsigned kStatusBits = 3;
    FileBox(SDB_SongFileStatus status, std::string_view path, std::size_t nameAt,
            std::unique_ptr<const FileIdentity> identity)
        : i_nameL(static_cast<std::uint32_t>(path.size() - nameAt) & 0x1FFFFFFF),
          i_status(status),
          i_folder(CMetaText::Interned(path.substr(0, nameAt))),
          i_identity(std::move(identity)) {
        std::copy_n(path.data() + nameAt, std::size_t{i_nameL}, reinterpret_cast<char*>(this + 1));
    }
    ~FileBox() = default;
    [[nodiscard]] std::string_view Name() const noexcept { return {reinterpret_cast<const char*>(this + 1), i_nameL}; }

    std::atomic<std::uint32_t> i_references{1};
    std::uint32_t i_nameL : 32 - kStatusBits;
    SDB_SongFileStatus i_status : kStatusBits;
    const CMetaText i_folder;                               // with its last slash; empty for a bare name
    const std::unique_ptr<const FileIdentity> i_identity;   // of a reference with an alias
};
static_assert(sizeof(FileBox) == 24);

using DictBox = Counted<CCFDictionary>;
using DataBox = Counted<CFData>;

template <class BoxT>
BoxT* BoxOf(std::uint64_t bits) noexcept {
    return reinterpret_cast<BoxT*>(bits);
}
std::uint64_t Bits(const void* boxP) noexcept { return reinterpret_cast<std::uintptr_t>(boxP); }
template <class T>
std::uint64_t Boxed(T content) {
    return Bits(new Counted<T>(std::move(content)));
}
template <class BoxT>
void RetainBox(std::uint64_t bits) noexcept {
    BoxOf<BoxT>(bits)->references.fetch_add(1, std::memory_order_relaxed);
}
template <class BoxT>
void ReleaseBox(std::uint64_t bits) noexcept {
    if (BoxOf<BoxT>(bits)->references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete BoxOf<BoxT>(bits);
}

/** The text of bits that stay where they are. */
std::string_view TextOf(std::uint64_t bits) noexcept {
    CMetaText text = CMetaText::Adopt(bits);
    const std::string_view view = text.View();
    (void)text.Detach();
    return view;
}

/** Checked first, mixed next, empty last. */
int BoolOrder(BoolValueType value) noexcept {
    switch (value) {
        case BoolValueType::kTrue:
            return 0;
        case BoolValueType::kMix:
            return 1;
        case BoolValueType::kFalse:
            break;
    }
    return 2;
}

}   // namespace

CMetaValue::CMetaValue(double value) noexcept
    : i_bits(std::bit_cast<std::uint64_t>(value)), i_type(ValType::ValType_FLOAT) {}
CMetaValue::CMetaValue(CFDate value) noexcept
    : i_bits(std::bit_cast<std::uint64_t>(value.absoluteT)), i_type(ValType::ValType_DATE) {}
CMetaValue::CMetaValue(const CCFDictionary& value) : i_bits(Boxed(value)), i_type(ValType::ValType_DICT) {}
CMetaValue::CMetaValue(const CFData& value) : i_bits(Boxed(value)), i_type(ValType::ValType_CFDATA) {}

CMetaValue::CMetaValue(const CMetaSongFile& value) : i_type(ValType::ValType_SONGFILE) {
    std::unique_ptr<const FileIdentity> identity;
    if (value.ref.HasAlias()) identity = std::make_unique<const FileIdentity>(value.ref.Alias()->Identity());
    i_bits = Bits(FileBox::Make(value.status, value.ref.GetPath().native(), std::move(identity)));
}

CMetaValue CMetaValue::File(SDB_SongFileStatus status, std::string_view path) {
    return {ValType::ValType_SONGFILE, Bits(FileBox::Make(status, path))};
}

CMetaValue::CMetaValue(const CMetaValue& other) noexcept : i_bits(other.i_bits), i_type(other.i_type) {
    switch (i_type) {
        case ValType::ValType_STRING: {
            CMetaText mine = CMetaText::Adopt(i_bits);
            CMetaText second = mine;   // the count of the copy
            i_bits = mine.Detach();
            (void)second.Detach();
            break;
        }
        case ValType::ValType_DICT:
            RetainBox<DictBox>(i_bits);
            break;
        case ValType::ValType_CFDATA:
            RetainBox<DataBox>(i_bits);
            break;
        case ValType::ValType_SONGFILE:
            BoxOf<FileBox>(i_bits)->Retain();
            break;
        default:
            break;
    }
}

CMetaValue::~CMetaValue() {
    switch (i_type) {
        case ValType::ValType_STRING: {
            const CMetaText last = CMetaText::Adopt(i_bits);
            break;
        }
        case ValType::ValType_DICT:
            ReleaseBox<DictBox>(i_bits);
            break;
        case ValType::ValType_CFDATA:
            ReleaseBox<DataBox>(i_bits);
            break;
        case ValType::ValType_SONGFILE:
            BoxOf<FileBox>(i_bits)->Release();
            break;
        default:
            break;
    }
}

std::string_view CMetaValue::Text() const noexcept {
    return i_type == ValType::ValType_STRING ? TextOf(i_bits) : std::string_view();
}
BoolValueType CMetaValue::Bool() const noexcept {
    return i_type == ValType::ValType_BOOL ? static_cast<BoolValueType>(i_bits) : BoolValueType::kFalse;
}
std::int32_t CMetaValue::Integer() const noexcept {
    return i_type == ValType::ValType_INTEGER ? static_cast<std::int32_t>(static_cast<std::uint32_t>(i_bits)) : 0;
}
double CMetaValue::Float() const noexcept {
    return i_type == ValType::ValType_FLOAT ? std::bit_cast<double>(i_bits) : 0.0;
}
CFDate CMetaValue::Date() const noexcept {
    return i_type == ValType::ValType_DATE ? CFDate{std::bit_cast<double>(i_bits)} : CFDate{};
}
CCFDictionary CMetaValue::Dictionary() const {
    return i_type == ValType::ValType_DICT ? BoxOf<DictBox>(i_bits)->value : CCFDictionary();
}
CFData CMetaValue::Data() const { return i_type == ValType::ValType_CFDATA ? BoxOf<DataBox>(i_bits)->value : CFData(); }
SDB_SongFileStatus CMetaValue::FileStatus() const noexcept {
    return i_type == ValType::ValType_SONGFILE ? BoxOf<FileBox>(i_bits)->Status() : SDB_SongFileStatus_NONE;
}
std::string CMetaValue::FilePath() const {
    return i_type == ValType::ValType_SONGFILE ? BoxOf<FileBox>(i_bits)->Path() : std::string();
}

CMetaSongFile CMetaValue::SongFile() const {
    if (i_type != ValType::ValType_SONGFILE) return {};
    const FileBox& box = *BoxOf<FileBox>(i_bits);
    CMetaSongFile file{box.Status(), CFileRef(box.Path())};
    if (const FileIdentity* identityP = box.Identity()) {
        const FileRefRecord record{FileRefRecord::kType_ALIAS, CFileAlias(box.Path(), *identityP).Encode(), {}};
        (void)CFileRef::FromRecord(record, file.ref);   // what was just encoded decodes; else the path alone stays
    }
    return file;
}

bool CMetaValue::IsLessThan(const CMetaValue& other) const {
    if (i_type != other.i_type) return false;
    switch (i_type) {
        case ValType::ValType_STRING:
            return CCollation::User().Compare(Text(), other.Text()) < 0;
        case ValType::ValType_BOOL:
            return BoolOrder(Bool()) < BoolOrder(other.Bool());
        case ValType::ValType_INTEGER:
            return Integer() < other.Integer();
        case ValType::ValType_FLOAT:
            return Float() < other.Float();
        case ValType::ValType_DATE:
            return Date().absoluteT < other.Date().absoluteT;
        case ValType::ValType_SONGFILE:
            return CCollation::User().Compare(FilePath(), other.FilePath()) < 0;
        default:
            return false;   // blocks and dictionaries have no order
    }
}

bool CMetaValue::IsEqual(const CMetaValue& other) const {
    if (i_type != other.i_type) return false;
    if (i_type == ValType::ValType_DICT || i_type == ValType::ValType_CFDATA) return *this == other;
    return !IsLessThan(other) && !other.IsLessThan(*this);
}

bool operator==(const CMetaValue& a, const CMetaValue& b) {
    if (a.i_type != b.i_type) return false;
    if (a.i_bits == b.i_bits) return true;
    switch (a.i_type) {
        case ValType::ValType_STRING:
            return a.Text() == b.Text();
        case ValType::ValType_FLOAT:
            return a.Float() == b.Float();   // 0 and -0
        case ValType::ValType_DATE:
            return a.Date() == b.Date();
        case ValType::ValType_DICT:
            return BoxOf<DictBox>(a.i_bits)->value == BoxOf<DictBox>(b.i_bits)->value;
        case ValType::ValType_CFDATA:
            return BoxOf<DataBox>(a.i_bits)->value == BoxOf<DataBox>(b.i_bits)->value;
        case ValType::ValType_SONGFILE:
            return *BoxOf<FileBox>(a.i_bits) == *BoxOf<FileBox>(b.i_bits);
        default:
            return false;   // held in the bits
    }
}

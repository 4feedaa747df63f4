#pragma once
#include <cstdint>
#include <string_view>
#include <utility>

/** A text of a value: one allocation that never changes, eight bytes to hold it. The empty text has no allocation.
    Threads  any; a CMetaText itself is a value.
    Errors   a text beyond kMost is cut at a character. */
class CMetaText {
public:
    static constexpr std::size_t kMost = 0x3FFFFFFF;

    CMetaText() = default;
    /** A copy of its own. */
    [[nodiscard]] static CMetaText Of(std::string_view text);
    /** The one copy that all equal interned texts share for as long as one of them lives. */
    [[nodiscard]] static CMetaText Interned(std::string_view text);
    CMetaText(const CMetaText& other) noexcept : i_boxP(other.i_boxP) { Retain(); }
    CMetaText(CMetaText&& other) noexcept : i_boxP(std::exchange(other.i_boxP, nullptr)) {}
    CMetaText& operator=(CMetaText other) noexcept {
        std::swap(i_boxP, other.i_boxP);
        return *this;
    }
    ~CMetaText() { Release(); }

    [[nodiscard]] std::string_view View() const noexcept;
    [[nodiscard]] bool Empty() const noexcept { return i_boxP == nullptr; }
    friend bool operator==(const CMetaText& a, const CMetaText& b) noexcept {
        return a.i_boxP == b.i_boxP || a.View() == b.View();
    }

    /** Gives the reference up as a number, to be given back to `Adopt` once. */
    [[nodiscard]] std::uint64_t Detach() noexcept;
    [[nodiscard]] static CMetaText Adopt(std::uint64_t bits) noexcept;

    /** Interned texts that live now; for tests and figures. */
    [[nodiscard]] static std::size_t InternedCount();

    struct Box;

private:
    explicit CMetaText(Box* boxP) noexcept : i_boxP(boxP) {}
    void Retain() const noexcept;
    void Release() noexcept;

    Box* i_boxP = nullptr;
};

#pragma once
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/** The last stereo frames of a stream of floats, each known by its number since the start of the stream, so that a
    reader can go back a little. Frames before the oldest and after the newest are silence.
    Threads  one.
    Owner    memory is taken in the constructor alone. */
class CFrameHistory {
public:
    /** Keeps at least `frames`. */
    explicit CFrameHistory(std::size_t frames);

    [[nodiscard]] std::uint64_t End() const noexcept { return i_endL; }   // the number of the next frame
    /** Room for new frames, at most `frames` and at least one, in place of the oldest ones; Added says how many came. */
    [[nodiscard]] std::span<float> Room(std::size_t frames) noexcept;
    void Added(std::size_t frames) noexcept { i_endL += frames; }
    /** Frames from `first` on where they lie, at most `frames`; as many as lie there in one piece, which are none
        outside of what is kept. Good until Room. */
    [[nodiscard]] std::span<const float> View(std::uint64_t first, std::size_t frames) const noexcept;
    /** The frames from `first` on. */
    void Copy(std::uint64_t first, std::span<float> stereo) const noexcept;
    /** Forgets all; the next frame is number 0. */
    void Clear() noexcept { i_endL = 0; }

private:
    std::vector<float> i_samples;
    std::size_t i_frames;   // a power of two
    std::uint64_t i_endL = 0;
};

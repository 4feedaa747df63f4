#pragma once
#include <atomic>
#include <cmath>
#include <span>
#include <utility>

#include "Audio/CPitchTempoVolume.h"
#include "Audio/CSpooler.h"

/** Pitch, tempo, volume and vocal mode on the read side of a chain of floats. `Base` is an ItoF layer.
    Units    what is read are stereo floats; positions and progress are the source's, at every tempo: what the engine
             holds does not count as read. The end comes when the source is used up, its last frames included.
    Threads  as the base; the reader allocates nothing. The settings are those of CPitchTempoVolume. */
template <class Base>
class CAS_Adapt_PitchTempoVolume : public Base, public CPitchTempoVolume {
public:
    template <class... Args>
    explicit CAS_Adapt_PitchTempoVolume(Args&&... args) : Base(std::forward<Args>(args)...) {
        this->Track(" -> Adapter: Pitch, Tempo, Volume");
    }

    OSErr Seek(double position) override {
        i_seekingL.fetch_add(1);   // what comes before the end of the seek is of neither place
        const OSErr err = Base::Seek(position);
        if (!Failed(err)) BeginAnew();
        i_seekingL.fetch_sub(1);
        return err;
    }
    /** With `onB` the samples come as they lie in the base: for a look at the song. Wants a Seek before it plays again. */
    void SetCue(bool onB) noexcept { i_cueB.store(onB); }

protected:
    OSErr Open_i(bool writeB, std::uint64_t& sizeL) override {
        if (!writeB) BeginAnew();
        return Base::Open_i(writeB, sizeL);
    }
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override {
        gotL = 0;
        i_bytesL = 0;
        if (i_seekingL.load() > 0) return noErr;
        if (i_restartB.exchange(false)) i_passedL = i_toldL = 0;
        const std::size_t samplesL = std::min(buffer.size() / kFrame_Bytes * 2, kSamplesAtATime);
        const std::span<float> stereo(reinterpret_cast<float*>(buffer.data()), samplesL);
        Below below(*this);
        std::size_t frames = 0;
        const OSErr err = i_cueB.load() ? below.ReadFrames(stereo, frames) : TimePitch().Render(stereo, frames, below);
        if (!i_cueB.load()) Volume().Process(stereo.first(frames * 2));
        gotL = frames * kFrame_Bytes;
        return err;
    }
    /** As much as one read takes, until all is given: what the engine makes of the base is known only afterwards. */
    std::uint64_t Available_i() override {
        if (i_cueB.load()) return Base::Available_i();
        return IsAtEnd_i() ? 0 : kSamplesAtATime * sizeof(float) / kSpool_AudioUnitBytes;
    }
    bool IsAtEnd_i() override {
        if (i_seekingL.load() > 0) return false;
        return i_cueB.load() ? Base::IsAtEnd_i() : TimePitch().IsDone();
    }
    std::uint64_t Consumed_i(std::size_t) override {
        i_passedL += Base::Consumed_i(i_bytesL);
        i_bytesL = 0;
        std::uint64_t heldL = 0;
        if (!i_cueB.load())
            heldL = static_cast<std::uint64_t>(std::max(0.0, std::floor(TimePitch().Held()))) * Base::kFrameUnits;
        // A change of the tempo may go back by the few ms by which the waves fit; a position does not.
        const std::uint64_t nowL = std::max(i_toldL, i_passedL - std::min(heldL, i_passedL));
        return nowL - std::exchange(i_toldL, nowL);
    }

private:
    void BeginAnew() noexcept {
        TimePitch().Restart();
        Volume().Restart();
        i_restartB.store(true);
    }
    static constexpr std::size_t kFrame_Bytes = 2 * sizeof(float);
    /** The base as the engine's source. */
    class Below final : public CTimePitchSource {
    public:
        explicit Below(CAS_Adapt_PitchTempoVolume& chain) : i_chain(chain) {}
        OSErr ReadFrames(std::span<float> stereo, std::size_t& frames) override {
            constexpr std::uint64_t kFrame_Units = kFrame_Bytes / kSpool_AudioUnitBytes;
            const std::uint64_t availableL = i_chain.Base::Available_i() / kFrame_Units;
            const std::size_t mostL = std::min(stereo.size(), kSamplesAtATime) / 2;
            frames = static_cast<std::size_t>(std::min<std::uint64_t>(mostL, availableL));
            if (frames == 0) return i_chain.Base::IsAtEnd_i() ? eofErr : noErr;
            std::size_t gotL = 0;
            const OSErr err = i_chain.Base::Read_i(std::as_writable_bytes(stereo.first(frames * 2)), gotL);
            frames = gotL / kFrame_Bytes;
            i_chain.i_bytesL += gotL;
            return err;
        }

    private:
        CAS_Adapt_PitchTempoVolume& i_chain;
    };

    std::atomic<int> i_seekingL{0};
    std::atomic<bool> i_restartB{false}, i_cueB{false};
    // Under the read lock.
    std::size_t i_bytesL = 0;                   // taken from the base by this read
    std::uint64_t i_passedL = 0, i_toldL = 0;   // since the last seek, own units: taken from the base, told as read
};

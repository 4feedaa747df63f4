#pragma once
#include <atomic>
#include <span>
#include <utility>
#include <vector>

#include "Core/Assertions.h"
#include "Media/SampleForms.h"
#include "Media/SpoolUnits.h"
#include "Platform/OSErr.h"

/** Floats inside, 16-bit samples for the reader. `Base` is a layer that has a cue mode. Switched off, and in cue mode,
    the floats pass. Writes pass: they go in as integers (CAS_Adapt_ItoF).
    Threads  as the base. Nothing is allocated after the constructor. */
template <class Base>
class CAS_Adapt_FtoI : public Base {
public:
    template <class... Args>
    explicit CAS_Adapt_FtoI(Args&&... args) : Base(std::forward<Args>(args)...), i_floats(kSamplesAtATime) {
        this->Track(" -> Adapter: Float to Integer");
    }
    /** Before anything is read. */
    void SetFloatToInteger(bool onB) noexcept { i_onB = onB; }
    void SetCue(bool onB) noexcept {
        i_cueB.store(onB);
        Base::SetCue(onB);
    }

protected:
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override {
        if (!Converts()) return Base::Read_i(buffer, gotL);
        const std::size_t samplesL = std::min(buffer.size() / sizeof(std::int16_t), kSamplesAtATime);
        const OSErr err = Base::Read_i(std::as_writable_bytes(std::span(i_floats).first(samplesL)), gotL);
        const std::size_t readL = gotL / sizeof(float);
        FloatToInteger(std::span(i_floats).first(readL), {reinterpret_cast<std::int16_t*>(buffer.data()), readL});
        gotL = readL * sizeof(std::int16_t);
        return err;
    }
    OSErr Write_i(std::span<const std::byte> bytes) override {
        if (!Assert(bytes.size() / kSpool_AudioUnitBytes <= kSamplesAtATime)) return paramErr;
        return Base::Write_i(bytes);
    }
    std::uint64_t Available_i() override { return Base::Available_i() / (Converts() ? 2 : 1); }
    std::uint64_t Consumed_i(std::size_t gotL) override { return Base::Consumed_i(Converts() ? gotL * 2 : gotL); }

private:
    [[nodiscard]] bool Converts() const noexcept { return i_onB && !i_cueB.load(); }
    bool i_onB = true;
    std::atomic<bool> i_cueB{false};
    std::vector<float> i_floats;   // the reader's
};

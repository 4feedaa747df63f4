#pragma once
#include <concepts>
#include <span>
#include <utility>
#include <vector>

#include "Audio/CAS_Ring.h"
#include "Core/Assertions.h"
#include "Media/SampleForms.h"

/** 16-bit samples outside, floats inside. A base that holds floats (the ring) gets them on its write side; one that
    holds integers (a file, memory) is read as floats. The other side passes.
    Units    a float is two units of 2 bytes. Buffers are aligned for their samples.
    Threads  as the base. Nothing is allocated after the constructor. */
template <class Base>
class CAS_Adapt_ItoF : public Base {
public:
    static constexpr bool kHoldsFloats = std::derived_from<Base, CAS_Ring>;
    /** Own units of the base that one stereo frame takes. */
    static constexpr std::uint64_t kFrameUnits = kHoldsFloats ? 4 : 2;

    template <class... Args>
    explicit CAS_Adapt_ItoF(Args&&... args)
        : Base(std::forward<Args>(args)...), i_integers(kHoldsFloats ? 0 : kSamplesAtATime), i_floats(kSamplesAtATime) {
        this->Track(" -> Adapter: Integer to Float");
    }
    /** Before anything is read or written. */
    void SetIntegerToFloat(bool onB) noexcept { i_onB = onB; }

protected:
    OSErr Write_i(std::span<const std::byte> bytes) override {
        if (!kHoldsFloats || !i_onB) return Base::Write_i(bytes);
        const std::size_t samplesL = bytes.size() / sizeof(std::int16_t);
        if (!Assert(samplesL <= kSamplesAtATime)) return paramErr;
        const std::span floats = std::span(i_floats).first(samplesL);
        IntegerToFloat({reinterpret_cast<const std::int16_t*>(bytes.data()), samplesL}, floats);
        return Base::Write_i(std::as_bytes(floats));
    }
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override {
        if (kHoldsFloats || !i_onB) return Base::Read_i(buffer, gotL);
        const std::size_t samplesL = std::min(buffer.size() / sizeof(float), kSamplesAtATime);
        const OSErr err = Base::Read_i(std::as_writable_bytes(std::span(i_integers).first(samplesL)), gotL);
        const std::size_t readL = gotL / sizeof(std::int16_t);
        IntegerToFloat(std::span(i_integers).first(readL), {reinterpret_cast<float*>(buffer.data()), readL});
        gotL = readL * sizeof(float);
        return err;
    }
    std::uint64_t Available_i() override { return Base::Available_i() * (!kHoldsFloats && i_onB ? 2 : 1); }
    std::uint64_t Consumed_i(std::size_t gotL) override {
        return Base::Consumed_i(!kHoldsFloats && i_onB ? gotL / 2 : gotL);
    }

private:
    bool i_onB = true;
    std::vector<std::int16_t> i_integers;   // the reader's
    std::vector<float> i_floats;            // the writer's
};

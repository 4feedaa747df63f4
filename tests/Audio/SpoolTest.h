#pragma once
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "Audio/CAS_Ring.h"
#include "Audio/CAS_SpoolRec.h"
#include "Threads/CS_MainThread_AbortProc.h"
#include "Threads/ThreadTest.h"

/** Closed at first or not; whoever passes a closed one waits until it opens. */
class TestGate {
public:
    void Shut() { Set(false); }
    void Open() { Set(true); }
    void Pass() {
        std::unique_lock guard(i_lock);
        ++i_arrivedL;
        i_changed.notify_all();
        i_changed.wait(guard, [this] { return i_openB; });
    }
    /** Until somebody has come since the last call. */
    void WaitArrival() {
        std::unique_lock guard(i_lock);
        i_changed.wait(guard, [this] { return i_arrivedL > 0; });
        i_arrivedL = 0;
    }

private:
    void Set(bool openB) {
        const std::scoped_lock guard(i_lock);
        i_openB = openB;
        i_arrivedL = 0;
        i_changed.notify_all();
    }
    std::mutex i_lock;
    std::condition_variable i_changed;
    bool i_openB = true;
    long i_arrivedL = 0;
};

/** A source of stereo frames that hold their own number, 32 bits each. */
class NumberSource : public CSpooler {
public:
    explicit NumberSource(std::uint32_t framesL, SpoolType type = SpoolType::kAudio)
        : CSpooler(Traits(type)), i_framesL(framesL), i_toldL(framesL) {}

    const std::uint32_t i_framesL;
    std::uint32_t i_toldL;   // the estimate that Open gives
    OSErr i_openErr = noErr, i_readErr = noErr, i_closeErr = noErr;
    std::uint32_t i_failAtL = 0xFFFFFFFF;   // i_readErr from this frame on
    bool i_seekableB = true;
    bool i_deafB = false;   // an abort does not open its gates
    TestGate i_openGate, i_readGate, i_seekGate, i_closeGate;
    std::atomic<std::size_t> i_largestL{0};   // the most bytes asked for at once
    std::atomic<long> i_closedL{0};

protected:
    static SpoolTraits Traits(SpoolType type) {
        SpoolTraits traits;
        traits.name = "Numbers";
        traits.type = type;
        traits.ownPositionB = true;
        return traits;
    }
    OSErr Open_i(bool, std::uint64_t& sizeL) override {
        i_openGate.Pass();
        sizeL = i_toldL * 2ULL;
        return i_openErr;
    }
    OSErr Close_i(bool) override {
        i_closeGate.Pass();
        ++i_closedL;
        return i_closeErr;
    }
    std::uint64_t Available_i() override { return (i_framesL - std::min(i_nextL, i_framesL)) * 2ULL; }
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override {
        i_readGate.Pass();
        i_largestL = std::max(i_largestL.load(), buffer.size());
        if (i_nextL >= i_failAtL) return i_readErr;
        for (gotL = 0; gotL + 4 <= buffer.size(); gotL += 4, ++i_nextL) std::memcpy(&buffer[gotL], &i_nextL, 4);
        return noErr;
    }
    OSErr Seek_i(std::uint64_t positionL) override {
        i_seekGate.Pass();
        if (!i_seekableB) return eofErr;
        i_nextL = static_cast<std::uint32_t>(positionL / 2);
        return noErr;
    }
    void Abort_i() override {
        if (i_deafB) return;
        for (TestGate* gateP : {&i_openGate, &i_readGate, &i_seekGate, &i_closeGate}) gateP->Open();
    }

private:
    std::uint32_t i_nextL = 0;   // under the read lock
};

/** Writes each 4-byte frame twice, as samples that become floats take twice the room. */
template <class Base>
class Doubled : public Base {
public:
    using Base::IsWriterWanted_i;

protected:
    OSErr Write_i(std::span<const std::byte> bytes) override {
        i_twice.resize(bytes.size() * 2);
        for (std::size_t n = 0; n + 4 <= bytes.size(); n += 4)
            for (const std::size_t toL : {n * 2, n * 2 + 4}) std::memcpy(&i_twice[toL], &bytes[n], 4);
        return Base::Write_i(i_twice);
    }

private:
    std::vector<std::byte> i_twice;
};
using NumberRing = Doubled<CAS_Ring>;

/** A completion: runs a lambda on the main thread, with the result. */
class MT_Told final : public CS_MainThread_AbortProc {
public:
    explicit MT_Told(std::function<void(OSErr)> told) : i_told(std::move(told)) {}

protected:
    OSErr Operate() override {
        i_told(Result());
        return noErr;
    }

private:
    const std::function<void(OSErr)> i_told;
};

/** An application, and spools that all end with the test. */
class SpoolTest : public ThreadTest {
protected:
    ~SpoolTest() override {
        CSpoolPump::AbortAll();
        i_managerP.reset();
        CSpoolPump::AllowAll();
    }
    /** The next `framesL` frames of a ring, which must be whole; fewer at the end or when nothing is there. */
    static std::vector<std::uint32_t> ReadFrames(CSpooler& ring, std::size_t framesL, OSErr* errP = nullptr) {
        std::vector<std::uint32_t> pairs(framesL * 2);
        std::size_t gotL = 0;
        const OSErr err = ring.Read(std::as_writable_bytes(std::span(pairs)), gotL);
        if (errP != nullptr) *errP = err;
        EXPECT_EQ(gotL % 8, 0U);
        std::vector<std::uint32_t> frames;
        for (std::size_t n = 0; n < gotL / 4; n += 2) {
            EXPECT_EQ(pairs[n], pairs[n + 1]) << "a torn frame";
            frames.push_back(pairs[n]);
        }
        return frames;
    }
    /** Reads to the end; the frames must follow on `firstL`. Answers what came after the last one. */
    std::uint32_t ReadToEnd(CSpooler& ring, std::uint32_t firstL, OSErr& err) {
        for (;;) {
            const auto frames = ReadFrames(ring, 2048, &err);
            for (const std::uint32_t frameL : frames) {
                if (frameL != firstL) ADD_FAILURE() << "frame " << frameL << " in place of " << firstL;
                firstL = frameL + 1;
            }
            if (Failed(err)) return firstL;
            if (frames.empty()) std::this_thread::yield();
        }
    }
    /** Until the writer has passed the high mark and waits. */
    bool WaitFull(CSpooler& ring) {
        return RunUntil([&] { return (ring.GetWritten() - ring.GetPos()) * 2 > kSpool_HighWater; });
    }
};

#pragma once
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "Audio/CAudioUnit.h"
#include "Audio/CDeviceNews.h"
#include "Platform/CAudioOutput.h"
#include "Threads/CSemaphore.h"

/** What a block asked for now would be. */
enum class BlockOutlook {
    kWhole,
    kShort,      // sound is missing that will come
    kUnwanted,   // none is wanted before the output is woken
};

/** Fills one block for the device. */
class CAudioRenderer {
public:
    /** All of `stereo`. CT_AudioRender: allocates nothing, logs nothing, waits for nobody. A failure ends the
        rendering. */
    virtual OSErr RenderBlock(std::span<std::int16_t> stereo) noexcept = 0;
    /** After the last block, or a failure: the frames by which the sound fades out, at the front of `stereo`. */
    virtual std::size_t RenderRest(std::span<std::int16_t> stereo) noexcept = 0;
    /** While it is not whole, and the output holds enough, the chain rather waits. */
    [[nodiscard]] virtual BlockOutlook Outlook() const noexcept = 0;

protected:
    ~CAudioRenderer() = default;
};

/** The units between a player and the output, and the thread that keeps the output fed (CT_AudioRender). It sleeps
    until there is room for a block and is woken when there is; told to stop, it stops at once. A device that goes away is
    replaced here, on the render thread, and looked for each second while there is none: there is no sound then that it
    could hold up. One that plays in the place of another gives way when that one comes.
    Threads  made, opened, started and stopped on one; RenderLoop on its own.
    Owner    CAudioPlayer; the output and the news are the caller's. */
class CAudioUnitChain {
public:
    /** `newsP`: any device will do, and what is news of it is known there; null: the one that is asked for. */
    CAudioUnitChain(CAudioOutput& output, CDeviceNews* newsP)
        : i_output(output), i_anyB(newsP != nullptr), i_news(newsP != nullptr ? *newsP : i_ownNews) {}
    ~CAudioUnitChain();
    CAudioUnitChain(const CAudioUnitChain&) = delete;
    CAudioUnitChain& operator=(const CAudioUnitChain&) = delete;

    CAudioUnit& AddUnit(const char* nameZ, OSType type, OSType subtype);
    [[nodiscard]] const std::vector<std::unique_ptr<CAudioUnit>>& Units() const noexcept { return i_units; }

    /** Opens the output; a failure is told to the user, as is another device. */
    OSErr Open(const std::string& device, const AudioBlocks& blocks);
    OSErr StartRendering(CAudioRenderer& renderer, double sleepT);
    /** Comes back when the thread no longer touches the renderer; the main thread keeps its timers going. */
    void StopRendering();
    void Close();

    /** How the rendering ended; noErr while it goes on. Any thread. */
    OSErr Result() const noexcept { return i_result.load(); }
    [[nodiscard]] CAudioOutput& Output() noexcept { return i_output; }
    /** The outlook is another one now. */
    void Wake() { i_output.Wake(); }
    [[nodiscard]] const CAudioOutput& Output() const noexcept { return i_output; }

    /** For CT_AudioRender. */
    void RenderLoop() noexcept;

private:
    OSErr RenderOne() noexcept;
    void RenderRest() noexcept;
    /** Seconds that the next block is better left for; 0: it is due. */
    [[nodiscard]] double RestT() const noexcept;
    void TendDevice();
    [[nodiscard]] bool IsElsewhere() const noexcept { return i_device != i_wanted; }

    CAudioOutput& i_output;
    const bool i_anyB;
    CDeviceNews i_ownNews;
    CDeviceNews& i_news;
    std::vector<std::unique_ptr<CAudioUnit>> i_units;
    std::string i_wanted;   // the device that was asked for,
    std::string i_device;   // and the one that plays now; empty for none. The render thread's while it runs
    bool i_openB = false;
    std::vector<std::int16_t> i_block;   // fixed while rendering
    std::size_t i_blockFramesL = 0;
    std::size_t i_roomL = 0;   // frames of all blocks
    double i_sleepT = 0;
    CAudioRenderer* i_rendererP = nullptr;
    std::atomic<bool> i_stopB{true};
    std::atomic<OSErr> i_result{noErr};
    bool i_renderingB = false;   // a thread was started and not waited for
    bool i_begunB = false;       // a block was rendered; the render thread's
    double i_lookT = 0;          // without a device: before this none is looked for; the render thread's
    CSemaphore i_stopped{"audio render stopped"};
};

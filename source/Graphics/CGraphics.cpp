#include "Graphics/CGraphics.h"

#include <algorithm>
#include <new>
#include <utility>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Graphics/CGraphicsClock.h"
#include "Graphics/CGraphicsOverlay.h"
#include "Graphics/CGraphicsPort.h"
#include "Graphics/CGraphicsSong.h"
#include "Graphics/CSubCodeStream.h"
#include "Platform/CClock.h"

unsigned CGraphics::s_block = 0;

namespace {
constexpr Rect kUpscaled_Area{0, 0, 864, 1200};

CDGPlane PlaneOf(COffscreen& pixels) {
    Assert(pixels.depth() == 4);
    return {pixels.base(), pixels.rowBytes()};
}
CDGTrueColor TrueColorOf(COffscreen& pixels) { return {pixels.Row32(0).data(), pixels.rowBytes() / sizeof(Pixel32)}; }
}   // namespace

CGraphics::CGraphics() = default;
CGraphics::~CGraphics() { i_overlay.reset(); }

std::unique_ptr<CGraphics> CGraphics::Make(std::uint16_t channelMask, GraphicsUpscaler upscaler, OSErr& err) {
    std::unique_ptr<CGraphics> made(new (std::nothrow) CGraphics);
    err = made ? made->Create(channelMask, std::move(upscaler)) : memFullErr;
    if (Failed(LogStep(err, "create graphics"))) made.reset();
    return made;
}

OSErr CGraphics::Create(std::uint16_t channelMask, GraphicsUpscaler upscaler) {
    for (COffscreen* planeP : {&i_index, &i_scratch})
        if (const OSErr err = planeP->Create(kCDGPlane_Area, 4); Failed(err)) return err;
    if (const OSErr err = i_trueColor.Create(kCDGPlane_Area, 32); Failed(err)) return err;
    i_upscaler = std::move(upscaler);
    if (i_upscaler) {
        if (const OSErr err = i_upscaled.Create(kUpscaled_Area, 32); Failed(err)) return err;
    }
    i_decoder = std::make_unique<CCDGDecoder>(PlaneOf(i_index), PlaneOf(i_scratch), channelMask);
    Reset(false);
    return noErr;
}

void CGraphics::SetSong(CGraphicsSong& song) {
    if (!Assert(i_songP == NULL)) return;
    i_songP = &song;
    i_overlay = std::make_unique<CGraphicsOverlay>(*this, song);
    i_decoder->SetChannelMask(song.ChannelMask());
}

const CPixels* CGraphics::MoviePicture() const {
    if (i_songP == nullptr || !i_songP->IsVideoSong()) return nullptr;
    const CGraphicsMovie* movieP = i_songP->Movie();
    return movieP == nullptr ? nullptr : movieP->Picture();
}

const CPixels& CGraphics::Picture() const {
    if (const CPixels* movieP = MoviePicture(); movieP != nullptr) return *movieP;
    return i_upscaler ? i_upscaled : i_trueColor;
}

void CGraphics::Reset(bool drawB) {
    i_decoder->Reset();
    UpdateScreen(false, drawB, false);
    // A later update paints all, whatever it was asked for: this one was shown to nobody.
    if (!drawB) i_decoder->MarkDirty(kCDGPlane_Area);
}

void CGraphics::ExecutePackets(std::span<const SubCodePacket> packets, bool drawB, bool forceB) {
    i_decoder->Execute(packets);
    UpdateScreen(false, drawB, forceB);
}

void CGraphics::UpdateScreen(bool skipCopyB, bool drawB, bool forceB) {
    if (i_colorsSeed != i_decoder->ColorsSeed()) {
        i_index.SetColors(i_decoder->Colors());
        i_scratch.SetColors(i_decoder->Colors());
        i_colorsSeed = i_decoder->ColorsSeed();
    }
    std::optional<PicturePart> part;   // of the picture that is shown; nothing for all of it
    if (MoviePicture() == nullptr) {
        const bool dirtyB = !i_decoder->Dirty().Empty();
        const bool wholeB = i_decoder->Dirty() == kCDGPlane_Area;
        const Rect changed = i_decoder->Update(TrueColorOf(i_trueColor), skipCopyB);
        if (changed.Empty() && dirtyB) return;
        if (!wholeB) part = PicturePart{changed, kCDGPlane_Area};
        if (dirtyB && !skipCopyB && i_upscaler) {
            const CPixelsLock from(i_trueColor), to(i_upscaled);
            OSErr err = FirstOf(from.Err(), to.Err());
            if (!Failed(err)) err = i_upscaler(i_trueColor, i_upscaled);
            static_cast<void>(LogStep(err, "upscale the picture"));   // the picture before stays
        }
    }
    if (drawB && i_portP != nullptr)
        i_portP->Draw(Picture(), {}, TransferMode::kKeepTransparent,
                      i_portP->IsSolid() ? std::nullopt : std::optional(BorderColor()));
    else if (drawB)
        RefreshPorts(part, forceB);
    i_decoder->ClearDirty();
}

void CGraphics::RefreshPorts(const std::optional<PicturePart>& part, bool forceB) {
    if (i_overlay == nullptr || (part && part->part.Empty() && !forceB)) return;
    for (CGraphicsPort* const portP : i_overlay->Ports()) {
        portP->Refresh(part);
        if (forceB && portP->IsVideoWindow()) portP->ForceUpdate();
    }
}

void CGraphics::RenderFor(CGraphicsPort& port) {
    CGraphicsPort* const beforeP = std::exchange(i_portP, &port);
    // The whole picture: part of it dirty in the border alone would end the update before the port is drawn.
    i_decoder->MarkDirty(kCDGPlane_Area);
    UpdateScreen(true, true, false);
    i_portP = beforeP;
}

void CGraphics::MovieChanged() {
    RefreshPorts({}, false);
    if (i_songP != nullptr) i_songP->NoteDrawn(CClock::Get().AbsoluteT());
}

OSErr CGraphics::ReadSubCodes(CSubCodeStream* streamP, std::span<SubCodePacket> packets, std::size_t& countL) {
    const std::size_t wantedL = countL;
    countL = 0;
    if (wantedL > packets.size()) return paramErr;
    SubCodeRead got;
    if (AssertWords(streamP != nullptr, "\"Video is NULL during ReadSubCodes??\" == NULL"))
        got = streamP->Read({packets.data()->bytes.data(), wantedL * kSubCodePacket_Bytes});
    if (Failed(got.err) && got.err != eofErr) return got.err;
    if (got.unitsL == 0) return eofErr;
    countL = got.unitsL / kSubCodePacket_Units;
    if (got.unitsL % kSubCodePacket_Units != 0) countL += kShortRead_Packets;   // the rest is zero and does nothing
    countL = std::min(countL, packets.size());
    CSubChannels::Correct(packets.first(countL));
    return noErr;
}

OSErr CGraphics::Advance(CSubCodeStream* streamP, std::size_t countL, bool drawB, bool forceB) {
    // 200 KB stay in the cache; fresh memory for an hour of packets costs more than running them.
    constexpr std::size_t kPart_Packets = 8192;
    bool ranB = false;
    OSErr err = noErr;
    for (std::size_t leftL = countL; leftL > 0;) {
        const std::size_t wantedL = std::min(leftL, kPart_Packets);
        i_packets.assign(wantedL + kShortRead_Packets, SubCodePacket{});
        std::size_t gotL = wantedL;
        err = ReadSubCodes(streamP, i_packets, gotL);
        if (Failed(err)) break;
        i_decoder->Execute(std::span(i_packets).first(gotL));
        ranB = true;
        if (gotL != wantedL || streamP->Position() % kSubCodePacket_Units != 0) break;   // the stream ends here
        leftL -= wantedL;
    }
    if (Failed(err) && !(ranB && err == eofErr)) return err;
    UpdateScreen(false, drawB, forceB);
    return noErr;
}

OSErr CGraphics::PullDue(bool forceB) {
    CGraphicsClock& clock = i_songP->Clock();
    CSubCodeStream* streamP = i_songP->Stream();
    const std::size_t positionL = streamP == nullptr ? 0 : streamP->Position();
    if (positionL < i_positionL) {   // rewound: what came later must not stay, nor shine through the replay
        i_endB = false;
        Reset(true);
    }
    i_positionL = positionL;
    const std::int64_t due = clock.PacketsDue(i_songP->SyncSlip300(), positionL);
    if (due <= 0) return noErr;

    i_endB = false;
    clock.ConsumePending();
    const OSErr err = Advance(streamP, static_cast<std::size_t>(due), true, forceB);
    if (streamP != nullptr) i_positionL = streamP->Position();
    if (Failed(err)) {
        clock.SetStreamEnded(true);
        return err == eofErr ? noErr : err;
    }
    i_songP->NoteDrawn(CClock::Get().AbsoluteT());
    return noErr;
}

void CGraphics::Tick(bool forceB) {
    if (i_songP == nullptr) return;
    if (i_songP->IsAtEnd() || i_songP->Clock().StreamEnded() || i_songP->IsVideoSong()) {
        EndOfStream();
        return;
    }
    if (i_songP->IsPaused()) return;
    if (const OSErr err = LogStep(PullDue(forceB), "CDG Draw Result"); Failed(err)) i_songP->StopAfter(err);
}

void CGraphics::EndOfStream() {
    if (i_songP->IsChangingSong()) return;
    if (CGraphicsMovie* movieP = i_songP->Movie();
        i_endB && movieP != nullptr && !movieP->IsEnded() && !i_songP->IsAtEnd())
        i_endB = false;   // sought back
    if (i_endB) return;
    if (!i_songP->IsAtEnd() && !i_songP->IsAudioFinished()) {
        CGraphicsMovie* movieP = i_songP->Movie();
        if (movieP == nullptr) return;
        if (!movieP->IsEnded()) {
            if (movieP->Idle()) MovieChanged();
            return;
        }
    }
    ++s_block;
    Assert(s_block != 0);
    if (s_block == 1 && !i_endB) {
        i_endB = true;
        if (i_songP->IsQuitting())
            i_songP->DeferPlayNext();
        else
            i_songP->PostPlayNext();
    }
    --s_block;
}

#pragma once
#include <memory>
#include <string>

struct AVFrame;
struct AVPacket;

struct AVFrameFree {
    void operator()(AVFrame* frameP) const noexcept;
};
struct AVPacketFree {
    void operator()(AVPacket* packetP) const noexcept;
};
using AVFramePtr = std::unique_ptr<AVFrame, AVFrameFree>;
using AVPacketPtr = std::unique_ptr<AVPacket, AVPacketFree>;

/** One decoded picture of a movie. Times are seconds of the song: 0 is where its sound begins. */
struct MovieFrame {
    AVFramePtr frameP;
    double timeT = 0;   // shown from here
    double endT = 0;    // until here, as far as the file tells; the next picture's time counts
};

/** What a movie's file says of its picture. */
struct MovieFacts {
    std::string container, codec;   // FFmpeg's names: "mov,mp4,m4a,3gp,3g2,mj2", "h264"
    int width = 0, height = 0;      // as it is meant to be seen: upright, with square pixels
    double frameRate = 0;           // the mean; 0: not told
    double seconds = 0;             // of song up to the picture's end; 0: not told
    bool soundB = false;
    bool hardwareB = false;   // decoded by the machine's video hardware
};

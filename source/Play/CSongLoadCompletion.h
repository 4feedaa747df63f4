#pragma once
#include <string>

#include "Core/CLog.h"
#include "Threads/CS_MainThread_AbortProc.h"

/** The end of the filling of a song's ring: all of its sound was read, or it cannot be. The song itself hears of a
    failure by its player. */
class CSongLoadCompletion final : public CS_MainThread_AbortProc {
public:
    explicit CSongLoadCompletion(std::string song)
        : CS_MainThread_AbortProc("song load completion"), i_song(std::move(song)) {}

protected:
    OSErr Operate() override {
        const OSErr err = Result();
        LogF("Song loaded: %s (result: %d)", i_song.c_str(), Number(err));
        return err;
    }

private:
    const std::string i_song;
};

#pragma once
#include <string>

#include "Threads/CMutex.h"

/** What the operator hears of the output that he chose: each piece of news once, however many songs meet it.
    Units    names as the machine has them; an empty one is no device.
    Threads  any.
    Owner    who owns the output. */
class CDeviceNews {
public:
    /** `instead` plays in the place of `wanted`, which was not there when a song opened it. */
    void Missing(const std::string& wanted, const std::string& instead);
    /** The same, in the middle of a song that `lost` played until now. */
    void Gone(const std::string& lost, const std::string& wanted, const std::string& instead);
    /** The chosen output plays: the next fault is news again. */
    void Plays(const std::string& wanted);
    /** The operator has asked again, and wants an answer. */
    void Forget() { i_told.Set({}); }

private:
    [[nodiscard]] bool IsNews(const std::string& wanted, const std::string& instead);

    CMutexT<std::string> i_told;   // the last news
};

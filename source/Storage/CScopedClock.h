#pragma once

/** Logs how long a step took: "Time to verify database: 0.012 s". */
class CScopedClock {
public:
    explicit CScopedClock(const char* wordsZ);
    ~CScopedClock();
    CScopedClock(const CScopedClock&) = delete;
    CScopedClock& operator=(const CScopedClock&) = delete;

private:
    const char* const i_wordsZ;
    const double i_startT;
};

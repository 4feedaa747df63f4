#pragma once
/** The two times of the machine. Tests put a scripted clock in its place.
    Threads  any. */
class CClock {
public:
    virtual ~CClock() = default;
    /** Wall clock: seconds since 2001-01-01 00:00 UTC, the epoch of the property lists. */
    [[nodiscard]] virtual double AbsoluteT() const = 0;
    /** Seconds that never jump, since some start; for intervals. */
    [[nodiscard]] virtual double SteadyT() const = 0;

    /** The clock in use: the machine's, unless a test installed another. Never null. */
    [[nodiscard]] static const CClock& Get();
    /** For tests: `clockP` is used until null is installed again, and is not owned. Not while other threads run. */
    static void Install(const CClock* clockP);
};

/** Seconds from 1970 to 2001, the difference of the two epochs. */
inline constexpr double kEpoch2001T = 978307200.0;

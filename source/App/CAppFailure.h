#pragma once
#include <stdexcept>

/** The application cannot run, and the user has been told. Ends the start-up. */
class CAppFailure final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

#include <clocale>

// The tests run in the locale of their environment, as the desktop's toolkit has it in the program: `./test` gives one
// with a decimal comma, so that a number that depends on it is seen.
namespace {
[[maybe_unused]] const bool s_usedB = std::setlocale(LC_ALL, "") != nullptr;
}

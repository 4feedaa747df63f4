#pragma once
#include <string>

/** The wall clock in the machine's time zone, as the log writes it: "2026-05-17 21:04:33 +0200". Any thread. */
[[nodiscard]] std::string LocalTimeText();

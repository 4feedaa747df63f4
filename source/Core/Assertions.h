#pragma once
/** Assertions report a fault of our own, never bad input; they are checked in every build, and the show goes on. */

/** Tells what a failed assertion does: logs, shows or queues (CAlerts installs the whole rule; before it, a log line).
    `continueB` false may end the process when a failure is being shown already. Returns true: go on. */
bool AssertFail(const char* expressionZ, const char* fileZ, long lineL, bool continueB = true);

using AssertHandler = bool (*)(const char* expressionZ, const char* fileZ, long lineL, bool continueB);
/** Any thread; null puts the log line back. */
void SetAssertHandler(AssertHandler handler) noexcept;

#define VOPLA_ASSERT_(expression, text) \
    (static_cast<bool>(expression) ? true : (AssertFail(text, __FILE__, __LINE__), false))
/** True when `expression` holds; else reports it and answers false, so that the caller can leave. */
#define Assert(expression) VOPLA_ASSERT_(expression, #expression)
/** The same with the words to report. */
#define AssertWords(expression, words) VOPLA_ASSERT_(expression, words)

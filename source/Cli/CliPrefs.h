#pragma once

struct CliCall;

// The settings of the root, or of the user without one. While a host runs on them it is asked, and takes what is set:
// it would write over a change of its file.

/** `prefs get KEY`. */
int GetPreference(const CliCall& call);
/** `prefs set KEY VALUE`. */
int SetPreference(const CliCall& call);
/** `prefs list`. */
int ListPreferences(const CliCall& call);

#pragma once

struct CliCall;

/** `name conform TEXT`: the text with the casing of names, small words lowered. */
int ConformName(const CliCall& call);

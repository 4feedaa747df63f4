#pragma once

struct CliCall;

/** `name parse TEMPLATE NAME`: the values that the template reads out of the name. */
int ParseName(const CliCall& call);
/** `name guess NAME...`: the template that reads most of the names, and those that it does not read. */
int GuessNames(const CliCall& call);
/** `name conform TEXT`: the text with the casing of names, small words lowered. */
int ConformName(const CliCall& call);

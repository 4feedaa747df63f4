#pragma once

/** The calling thread works from now on only when no other one of the machine wants to: for long work beside a show. */
void LowerThreadPriority();

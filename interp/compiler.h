// The one pass over a formula's text: to a program, or to the verdict of a check. What is reduced when follows from the
// tokens alone, never from values, so the program can be replayed for every case.
#pragma once

#include "interp/program.h"
#include "interp/tokenizer.h"

namespace qmml::interp {

struct Verdict {
    bool good = true;
    Error error = error_empty;
    int position = 0;
};

// Instructions in front of an error stay in the program: a fault in one of them comes before the error. May throw
// std::bad_alloc.
Verdict compile(Tokenizer tokenizer, Program& program);

// Stricter: tokens must follow each other as an automaton says, and no operand may be left over.
Verdict check(Tokenizer tokenizer);

} // namespace qmml::interp

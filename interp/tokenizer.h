// Formula text to tokens.
#pragma once

#include "interp/language.h"

#include <cstddef>
#include <qmml/interp.h>

namespace qmml::interp {

enum Error : int {
    error_empty = 0,
    error_unknown_name = 1,
    error_parenthesis = 2,
    error_separator_expected = 3,
    error_syntax = 4,
    error_formula = 5,
};

// Thrown inside the pass over the text and caught at its end; never leaves the interpreter.
struct FormulaError {
    Error code;
};

struct Separators {
    char decimal = '.';
    char list = ',';
};

struct Token {
    enum Kind { other, function, number, constant, variable };

    int code = code_none;
    Kind kind = other;
    int index = 0; // the function's operator code, or the variable's number
    double value = 0.0;
};

class Tokenizer {
public:
    // variables: how many of X, Y, Z are known, or -1 for T.
    Tokenizer(const char* text, std::size_t length, Separators separators, int variables) noexcept;

    // Skips white space and marks the place at which an error would be reported.
    void begin_token() noexcept;
    bool blank() const noexcept; // nothing but white space is left
    bool at_end() const noexcept;
    // Throws FormulaError. Not called at the end.
    Token next();
    // To be called once a number has been taken in: throws where it runs into something else.
    void expect_break();
    // From now on positions count from here.
    void restart() noexcept;

    int error_position() const noexcept { return static_cast<int>(m_error - m_start); }

private:
    bool is_break(char c) const noexcept;
    bool starts_with(const char* word) const noexcept;
    int operator_code() const noexcept;
    Token operator_token(int code) noexcept;
    Token name();
    Token number();
    Token target(const char* behind_name) noexcept;

    const char* const m_text;
    const char* const m_end;
    const Separators m_separators;
    const int m_variables;
    const char* m_cursor;
    const char* m_start;           // where positions count from
    const char* m_error;           // where an error would be reported
    const char* m_first = nullptr; // the first character that is not blank
};

} // namespace qmml::interp

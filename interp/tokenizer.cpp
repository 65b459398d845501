#include "interp/tokenizer.h"

#include "interp/number_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace qmml::interp {

// In the order of their codes; "=" and ">" stand again inside the two-character relations, where their code is
// another's.
static constexpr std::string_view s_operator_characters = "^*/+-=>=<=>&|~()";
// What ends a name or a number, beside the list separator.
static constexpr std::string_view s_break_characters = " \t\r\n^*/+-=><();";

static constexpr std::size_t s_name_length = 10; // what is kept of a name
static constexpr double s_euler = 2.7182818;
static constexpr double s_pi = 3.1415926;

static constexpr auto s_operator_codes = [] {
    std::array<int, 256> codes{};
    codes.fill(-1);
    for (std::size_t i = s_operator_characters.size(); i-- > 0;)
        codes[static_cast<unsigned char>(s_operator_characters[i])] = static_cast<int>(i);
    return codes;
}();

static constexpr auto s_breaks = [] {
    std::array<bool, 256> breaks{};
    for (const char c : s_break_characters)
        breaks[static_cast<unsigned char>(c)] = true;
    return breaks;
}();

static bool is_blank(char c) noexcept
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

static bool is_digit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

static char lower(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

static bool equals_ignoring_case(std::string_view name, std::string_view lower_case) noexcept
{
    return std::ranges::equal(name, lower_case, {}, lower);
}

Tokenizer::Tokenizer(const char* text, std::size_t length, Separators separators, int variables) noexcept
    : m_text(text), m_end(text + length), m_separators(separators), m_variables(variables), m_cursor(text),
      m_start(text), m_error(text)
{
}

bool Tokenizer::is_break(char c) const noexcept
{
    return s_breaks[static_cast<unsigned char>(c)] || c == m_separators.list;
}

void Tokenizer::begin_token() noexcept
{
    while (is_blank(*m_cursor))
        ++m_cursor;
    if (m_first == nullptr)
        m_first = m_cursor;
    m_error = m_cursor;
}

bool Tokenizer::blank() const noexcept
{
    const char* p = m_cursor;
    while (is_blank(*p))
        ++p;
    return *p == '\0';
}

bool Tokenizer::at_end() const noexcept
{
    return *m_cursor == '\0' || (m_cursor[0] == '/' && m_cursor[1] == '/') ||
           (*m_cursor == ';' && m_separators.list != ';');
}

void Tokenizer::restart() noexcept
{
    while (is_blank(*m_cursor))
        ++m_cursor;
    m_start = m_cursor;
}

bool Tokenizer::starts_with(const char* word) const noexcept
{
    return std::strncmp(m_cursor, word, std::strlen(word)) == 0;
}

int Tokenizer::operator_code() const noexcept
{
    const int code = s_operator_codes[static_cast<unsigned char>(*m_cursor)];
    return code < 0 && *m_cursor == m_separators.list ? static_cast<int>(code_separator) : code;
}

Token Tokenizer::operator_token(int code) noexcept
{
    if (code == code_equal && m_cursor == m_text)
        code = code_start;
    else if (code == code_greater && m_cursor[1] == '=')
        code = code_greater_equal;
    else if (code == code_less && m_cursor[1] == '=')
        code = code_less_equal;
    else if (code == code_less && m_cursor[1] == '>')
        code = code_not_equal;
    m_cursor += code == code_greater_equal || code == code_less_equal || code == code_not_equal ? 2 : 1;
    return {code};
}

Token Tokenizer::next()
{
    if (m_cursor[0] == '*' && m_cursor[1] == '*') {
        m_cursor += 2;
        return {code_power};
    }
    if (const int code = operator_code(); code >= 0)
        return operator_token(code);

    // Words are matched as they stand, whatever follows: "order" is "or" and "der".
    static constexpr struct {
        const char* word;
        int code;
    } s_words[] = {{"and", code_and}, {"or", code_or}, {"not", code_not}};
    for (const auto& entry : s_words)
        if (starts_with(entry.word)) {
            m_cursor += std::strlen(entry.word);
            return {entry.code};
        }
    if (starts_with("ifgraph")) {
        m_cursor += std::strlen("ifgraph");
        return {code_function, Token::function, code_ifgraph};
    }
    return is_digit(*m_cursor) || *m_cursor == m_separators.decimal ? number() : name();
}

Token Tokenizer::number()
{
    const NumberText number = read_number(m_cursor, m_end);
    m_cursor = number.end;
    return {code_value, Token::number, 0, number.value};
}

void Tokenizer::expect_break()
{
    if (*m_cursor == '\0' || is_break(*m_cursor))
        return;
    m_error = m_cursor;
    throw FormulaError{error_separator_expected};
}

Token Tokenizer::name()
{
    const char* end = m_cursor;
    while (*end != '\0' && !is_break(*end))
        ++end;
    const std::string_view text(m_cursor, std::min(static_cast<std::size_t>(end - m_cursor), s_name_length));

    Token token{code_none};
    static constexpr std::string_view s_variable_names[] = {"x", "y", "z"};
    if (const int function = find_function(text); function >= 0)
        token = {code_function, Token::function, function};
    else if (equals_ignoring_case(text, "euler"))
        token = {code_value, Token::constant, 0, s_euler};
    else if (equals_ignoring_case(text, "pi"))
        token = {code_value, Token::constant, 0, s_pi};
    else if (m_variables < 0 && equals_ignoring_case(text, "t"))
        token = {code_value, Token::variable, 0};
    else
        for (int v = 0; v < m_variables; ++v)
            if (equals_ignoring_case(text, s_variable_names[v]))
                token = {code_value, Token::variable, v};

    if (token.code == code_none) {
        if (m_cursor != m_first)
            throw FormulaError{error_unknown_name};
        return target(end);
    }
    m_cursor = end;
    return token;
}

// An unknown name in front names the result: the formula proper stands behind the next "=", wherever that is.
Token Tokenizer::target(const char* behind_name) noexcept
{
    const char* equals = std::strchr(behind_name, '=');
    m_cursor = equals != nullptr ? equals + 1 : m_end;
    return {code_start};
}

} // namespace qmml::interp

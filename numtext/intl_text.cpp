#include "platform/separators.h"

#include <qmml/core.h>
#include <qmml/numtext.h>
#include <string>
#include <utility>

namespace {

using SConvInfo = CStrIntlStg::SConvInfo;

// Two characters become two others, one at a time; the decimal character is looked at first.
struct Mapping {
    char from_decimal, from_list, to_decimal, to_list;

    void operator()(char& c) const noexcept
    {
        if (c == from_decimal)
            c = to_decimal;
        else if (c == from_list)
            c = to_list;
    }
};

SConvInfo user_separators() noexcept
{
    SConvInfo info;
    CStrIntlStg::InitIntl(info);
    return info;
}

Mapping to_neutral(const SConvInfo& user) noexcept
{
    return {user.decimal, user.list, '.', ','};
}

Mapping to_locale(const SConvInfo& user) noexcept
{
    return {'.', ',', user.decimal, user.list};
}

void map_text(CString& text, Mapping (*direction)(const SConvInfo&) noexcept)
{
    const SConvInfo user = user_separators();
    if (!user.convert)
        return;
    std::string mapped = text.GetText();
    const Mapping mapping = direction(user);
    for (char& c : mapped)
        mapping(c);
    text = CString(std::move(mapped));
}

void map_text(char* text, Mapping (*direction)(const SConvInfo&) noexcept) noexcept
{
    const SConvInfo user = user_separators();
    if (!text || !user.convert)
        return;
    const Mapping mapping = direction(user);
    for (; *text; ++text)
        mapping(*text);
}

} // namespace

CStrIntlStg::CStrIntlStg() = default;
CStrIntlStg::CStrIntlStg(const CString& neutral) : m_text(neutral) {}
CStrIntlStg::CStrIntlStg(const char* neutral) : m_text(neutral) {}
CStrIntlStg::CStrIntlStg(const CStrIntlStg& other) : m_text(other.m_text) {}
CStrIntlStg::~CStrIntlStg() = default;

CStrIntlStg& CStrIntlStg::operator=(const CStrIntlStg& other)
{
    m_text = other.m_text;
    return *this;
}

CStrIntlStg& CStrIntlStg::operator=(const CString& user)
{
    Set(user);
    return *this;
}

CStrIntlStg& CStrIntlStg::operator=(const char* user)
{
    Set(user);
    return *this;
}

void CStrIntlStg::Set(const CStrIntlStg& other)
{
    *this = other;
}

void CStrIntlStg::Set(const CString& user)
{
    CString text = user;
    Conv2US(text);
    m_text = std::move(text);
}

void CStrIntlStg::Set(const char* user)
{
    Set(CString(user));
}

void CStrIntlStg::SetUS(const char* neutral)
{
    m_text = CString(neutral);
}

void CStrIntlStg::Get(CString& user) const
{
    CString text = m_text;
    Conv2Intl(text);
    user = std::move(text);
}

CStrIntlStg::operator CString() const
{
    CString user;
    Get(user);
    return user;
}

CStrIntlStg::operator const char*() const
{
    Get(m_shown);
    return m_shown;
}

int CStrIntlStg::GetLength() const
{
    return m_text.GetLength();
}

int CStrIntlStg::IsEmpty() const
{
    return m_text.IsEmpty() ? 1 : 0;
}

int CStrIntlStg::IsTrivial() const
{
    return *Lstrpreclip(m_text) == '\0' ? 1 : 0;
}

void CStrIntlStg::Empty()
{
    m_text.Empty();
}

void CStrIntlStg::Conv2US(CString& text)
{
    map_text(text, to_neutral);
}

void CStrIntlStg::Conv2Intl(CString& text)
{
    map_text(text, to_locale);
}

void CStrIntlStg::_Conv2US(char* text)
{
    map_text(text, to_neutral);
}

void CStrIntlStg::_Conv2Intl(char* text)
{
    map_text(text, to_locale);
}

void CStrIntlStg::InitIntl(SConvInfo& info)
{
    const auto user = qmml::platform::separators();
    info = {user.decimal, user.list, static_cast<unsigned char>(user.decimal != '.' || user.list != ',')};
}

CArchive& operator<<(CArchive& archive, const CStrIntlStg& text)
{
    return archive << text.m_text;
}

CArchive& operator>>(CArchive& archive, CStrIntlStg& text)
{
    return archive >> text.m_text;
}

void DDX_Text(CDataExchange* exchange, int id, CStrIntlStg& text)
{
    if (!exchange)
        return;
    exchange->PrepareEditCtrl(id);
    if (exchange->m_bSaveAndValidate)
        text = exchange->GetControlText(id);
    else
        exchange->SetControlText(id, CString(text));
}

/* qmml/platform.h: what the host's platform or framework would supply, for places that have neither.
 *
 * Counted strings, archives, dialog exchange, variants and reference-counted objects, each no larger than this library
 * needs it. */
#ifndef QMML_PLATFORM_H
#define QMML_PLATFORM_H

#include "qmml/export.h"

#include <stddef.h>

QMML_BEGIN_C

#if !defined(_WIN32)
/* The calling thread's last error, 0 at first. The probability distributions report through it. */
QMML_API unsigned GetLastError(void);
QMML_API void SetLastError(unsigned code);
#endif

/* The decimal and list separators of numbers in text. They follow the user's numeric locale, the first of LC_ALL,
 * LC_NUMERIC and LANG that is not empty, whenever they are asked for; the process's own locale plays no part. With a
 * decimal comma the list separator is ";", otherwise ",".
 * This overrides them for the process. A 0 gives that separator back to the locale. */
QMML_API void QMMLSetSeparators(char decimal, char list);

/* ---- Variants ----
 * An argument from a scripting host. QMML_ERROR marks one that was left out. With QMML_BYREF in its kind, value.ref
 * points at the variant meant, which is no reference itself. */
enum { QMML_EMPTY = 0, QMML_ERROR = 1, QMML_INT32 = 2, QMML_DOUBLE = 3, QMML_TEXT = 4, QMML_BYREF = 0x4000 };

typedef struct QmmlVariant {
    int kind;
    int reserved;
    union {
        int i;
        double d;
        const char* text;
        const struct QmmlVariant* ref;
    } value;
} QmmlVariant;

/* ---- Event sources ----
 * A reference-counted object: its first word points at its operations. */
typedef struct EventSource EventSource;

typedef struct EventSourceOps {
    int (*query)(EventSource* source, const void* id, void** out);
    unsigned (*add_reference)(EventSource* source);
    unsigned (*release)(EventSource* source);
} EventSourceOps;

struct EventSource {
    const EventSourceOps* ops;
};

QMML_END_C

#ifdef __cplusplus
#include <climits>
#include <string>
#include <utility>

/* A counted string. A null pointer counts as an empty text. */
class CString {
public:
    CString() = default;
    CString(const char* text) : m_text(text ? text : "") {}
    CString(const char* text, size_t length) : m_text(text ? text : "", text ? length : 0) {}
    CString(std::string text) : m_text(std::move(text)) {}

    int GetLength() const { return m_text.size() < size_t(INT_MAX) ? int(m_text.size()) : INT_MAX; }
    bool IsEmpty() const { return m_text.empty(); }
    void Empty() { m_text.clear(); }
    operator const char*() const { return m_text.c_str(); }
    const std::string& GetText() const { return m_text; }

    friend bool operator==(const CString& a, const CString& b) { return a.m_text == b.m_text; }
    friend bool operator==(const CString& a, const char* b) { return a.m_text == (b ? b : ""); }
    friend bool operator==(const char* a, const CString& b) { return b == a; }
    friend bool operator!=(const CString& a, const CString& b) { return !(a == b); }
    friend bool operator!=(const CString& a, const char* b) { return !(a == b); }
    friend bool operator!=(const char* a, const CString& b) { return !(b == a); }

private:
    std::string m_text;
};

/* A dialog's side of data exchange; the host implements it. */
class CDataExchange {
public:
    virtual ~CDataExchange() = default;
    virtual void PrepareEditCtrl(int id) = 0;
    virtual CString GetControlText(int id) const = 0;
    virtual void SetControlText(int id, const char* text) = 0;

    int m_bSaveAndValidate = 0; /* not 0: from the dialog into the object */
};

/* Where an archive's bytes go to or come from; the host implements it. Read returns the number of bytes that arrived.
 */
class CArchiveSink {
public:
    virtual ~CArchiveSink() = default;
    virtual void Write(const void* data, size_t size) = 0;
    virtual size_t Read(void* data, size_t size) = 0;
};

class CArchive {
public:
    enum Mode { store, load };

    CArchive(CArchiveSink& sink, Mode mode) : m_sink(&sink), m_mode(mode) {}

    bool IsStoring() const { return m_mode == store; }
    CArchiveSink& GetSink() const { return *m_sink; }

private:
    CArchiveSink* m_sink;
    Mode m_mode;
};

/* A string is its length and its bytes. The length takes one byte below 255; else 0xFF and 16 bits below 65534; else
 * 0xFF, 0xFFFF and 32 bits, little endian. Loading never takes memory for more than arrives, and gives an empty string
 * when less arrives than the length says. An archive of the other mode is left alone, and the string emptied. */
QMML_API CArchive& operator<<(CArchive& archive, const CString& text);
QMML_API CArchive& operator>>(CArchive& archive, CString& text);
#endif

#endif

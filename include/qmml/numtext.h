/* qmml/numtext.h: numbers as text.
 *
 * Two sets of separators, which do not touch each other. The formatter and the scanner follow a setting of the process
 * (SetDecimalSep), "." at first. CStrIntlStg, for texts that users see and type, follows the user's locale
 * (QMMLSetSeparators in qmml/platform.h).
 *
 * The settings are process-wide and not locked: bracket setting and use with IniConLock and IniConRelease of
 * qmml/core.h. ConvWrapper and ConvWrapper1 take that lock themselves. No number function throws or allocates, or fails
 * on a NaN or an infinity; a null text is left alone and gives 0. */
#ifndef QMML_NUMTEXT_H
#define QMML_NUMTEXT_H

#include "qmml/export.h"
#include "qmml/platform.h"

QMML_BEGIN_C

/* ---- Decimal separator ----
 * Any 16-bit character is kept and given back. Numbers are written and read with it if it is visible ASCII and no
 * digit, sign or "e", and with "." otherwise. */
QMML_API void SetDecimalSep(unsigned short c);
QMML_API void SetDecimalSepConv(unsigned short c); /* another name */
QMML_API unsigned short GetDecimalSepConv(void);

/* ---- Formatter ----
 * The general format is the shortest text that reads back as the value rounded to `digits` significant digits (a tie
 * goes to the even digit): no trailing zeros, and fewer digits yet for a denormal. It is fixed, "-0.00125", where that
 * takes at most `width` characters or no more than with an exponent, else it has one, "1.25e-30". Digits come before
 * width: a text that is longer than the width stays whole. Blanks fill a shorter one up on the right.
 *
 * A missing value is "." whatever the separator; the infinities are "1e999" and "-1e999", which every reader here takes
 * for what they are; a negative zero keeps its sign. A finite value never rounds up to an infinity: the digits of one
 * that would are cut off instead. */

enum { QMML_GENERAL_FORMAT = 132 };

/* Chooses the format for Conver__; until then 132, 15, 15. The width counts as at least 0 and at most 255, the digits
 * as 1 to 17. 132 is the one format there is, and every other selector stands for it. */
QMML_API void IniCon__(int selector, int width, int digits);
/* Writes the text and a zero behind it: the larger of the width and 24 characters, plus 1, must fit. Returns the
 * length with its blanks. */
QMML_API int Conver__(double value, char* text);
/* IniCon__, whose choice remains, and Conver__. */
QMML_API int ConvWrapper(double value, int selector, int width, int digits, char* text);
QMML_API int ConvWrapper1(double value, char* text); /* with 132, 15, 15: up to 24 characters, plus 1 */
/* Writes an integer and a zero behind it, at most 12 characters in all. */
QMML_API void ConInt__(int value, char* text);

/* Of the value rounded to 15 significant digits: how many it needs, 1 to 15 (1 for what is missing or infinite), and
 * how many of the digits of its fixed form stand behind the separator (0 for those). */
QMML_API int EvalNumDig(double value);
QMML_API int EvalDC(double value);

/* ---- Scanner ----
 * A number is a sign, digits with one separator before, among or behind them, and an exponent ("e" or "E", a sign,
 * digits); all but one digit may be left out. The separator is "." or the configured one. The value is the nearest
 * double; out of range it is an infinity or a zero. "." alone is a missing value. Nothing else is a number: no "inf" or
 * "nan", no hexadecimal, no blanks or grouping among the digits.
 *
 * The functions return 1, or 0 for no number, and then write nothing. A null value makes the call a test. */

/* Chooses the scanner's mode: 13 is the matrix file's. All modes read the same numbers. */
QMML_API void Ini_GN(int mode);
/* The whole text, blanks around the number aside. A text without anything else than blanks is a missing value. */
QMML_API int Get_NU(const char* text, double* value);
/* The number at the cursor, blanks before it aside; the cursor comes to stand right behind it, whatever follows. Blanks
 * up to the end of the text are one missing value, and at the end itself there is none: the result is 0. */
QMML_API int Get_NU_EOB(const char** cursor, double* value);

QMML_END_C

#ifdef __cplusplus
/* A text kept in neutral form, with "." as decimal and "," as list separator, for documents and settings; users see and
 * type it with the separators of their locale. These are asked for at each conversion.
 *
 * A conversion looks at single characters, not at numbers: to neutral, each decimal separator becomes "." and each list
 * separator ",", the former if they are the same; to the locale, each "." and "," becomes its counterpart. Where the
 * locale's pair is "." and "," nothing changes.
 *
 * The string's own exceptions pass through. An object serves one thread at a time, reading included. */
class QMML_API CStrIntlStg {
public:
    struct SConvInfo {
        char decimal;
        char list;
        unsigned char convert; /* 0 where the locale's separators are the neutral ones, else 1 */
    };

    CStrIntlStg();
    CStrIntlStg(const CString& neutral);
    CStrIntlStg(const char* neutral);
    CStrIntlStg(const CStrIntlStg& other);
    CStrIntlStg& operator=(const CStrIntlStg& other);
    CStrIntlStg& operator=(const CString& user); /* as Set; the constructors do not convert */
    CStrIntlStg& operator=(const char* user);
    ~CStrIntlStg();

    void Set(const CStrIntlStg& other);
    void Set(const CString& user);
    void Set(const char* user);
    void SetUS(const char* neutral);

    void Get(CString& user) const;
    operator CString() const;     /* what Get gives */
    operator const char*() const; /* the same, until the next conversion of this object to a pointer, or its end */

    int GetLength() const;
    int IsEmpty() const;
    int IsTrivial() const; /* 1 when there is only white space */
    void Empty();

    static void Conv2US(CString& text);
    static void Conv2Intl(CString& text);
    static void _Conv2US(char* text);
    static void _Conv2Intl(char* text);
    static void InitIntl(SConvInfo& info);

    /* The neutral text, as a CString is stored and loaded. */
    friend QMML_API CArchive& operator<<(CArchive& archive, const CStrIntlStg& text);
    friend QMML_API CArchive& operator>>(CArchive& archive, CStrIntlStg& text);

private:
    CString m_text;
    mutable CString m_shown; /* what the pointer conversion points at */
};

QMML_API CArchive& operator<<(CArchive& archive, const CStrIntlStg& text);
QMML_API CArchive& operator>>(CArchive& archive, CStrIntlStg& text);

/* Saving, the control's text becomes the object's and is converted to neutral; loading, the control shows it with the
 * locale's separators. The control is prepared first. A null exchange does nothing. */
QMML_API void DDX_Text(CDataExchange* exchange, int id, CStrIntlStg& text);
#endif

#endif

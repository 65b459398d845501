/* qmml/core.h: memory blocks, last error, start-up, messages and bounded strings.
 *
 * No call throws. Except where said, the state behind these functions is process-wide and not locked: use it from one
 * thread at a time. */
#ifndef QMML_CORE_H
#define QMML_CORE_H

#include "qmml/export.h"
#include "qmml/platform.h"

QMML_BEGIN_C

/* ---- Memory blocks ----
 * A block is plain heap memory that the caller owns through a pointer variable, which these functions write.
 * Result 0 for success, 1 for failure; a variable that is null, unmapped or read-only is a failure. The
 * plain family and the _dbg family each release and resize their own blocks only. */

/* A zero-filled block. On failure *block is null; size 0 succeeds with a null block. GetMem__ is another name. */
QMML_API int AllocMem__(void** block, unsigned size);
QMML_API int GetMem__(void** block, unsigned size);
/* Null is ignored. */
QMML_API void FreeMem__(void* block);
/* Keeps the contents and fills what is new with zeros; on failure the old block stays. Size 0 frees the block and
 * leaves *block dangling: the caller clears it. */
QMML_API int ReallMem__(void** block, unsigned size);

/* The same from the C heap; file and line are ignored. */
QMML_API int _AllocMem_dbg(void** block, unsigned size, int file, int line);
QMML_API int _GetMem_dbg(void** block, unsigned size, int file, int line);
QMML_API void _FreeMem_dbg(void* block);
/* As realloc, unlike ReallMem__: new bytes are not cleared, and on failure *block is null and the old block lost. */
QMML_API int _ReallMem_dbg(void** block, unsigned size, int file, int line);

/* ---- Last error ----
 * One number for the process, 0 at first. Functions that set it say so; success leaves it as it was.
 * Not to be confused with the per-thread value of qmml/platform.h. */

/* Returns the code that stood before. */
QMML_API int QMMLSetLastError(int code);
QMML_API int QMMLGetLastError(void);

/* ---- Start-up ----
 * Loading the library sets everything up and seeds the generator from the tick count. */

/* Joins the library's messages to the host framework's resource chain. Off Windows there is no such chain, and the
 * library finds its own messages without it: the call has no effect. */
QMML_API void HuxDllInitFuncs(void);

/* Bracket the use of the number-text settings. The lock is recursive and waits without limit; releasing a lock that
 * the calling thread does not hold does nothing. */
QMML_API void IniConLock(void);
QMML_API void IniConRelease(void);

/* ---- Messages ----
 * Texts are UTF-8. A module is a table of them; a null module is an empty one. The loaders copy at most 1023 bytes,
 * never part of a character, and drop a leading "DontTranslate!!" in any case. A missing text is empty.
 *
 * The result lies in a ring of ten buffers of 1024 bytes: it stays until the tenth request after it. */

typedef struct QmmlString {
    unsigned id;
    const char* text;
} QmmlString;

typedef struct QmmlModule {
    const QmmlString* strings;
    unsigned count;
} QmmlModule;

QMML_API char* szLoadResString(const QmmlModule* module, int id);
QMML_API char* szGetString(unsigned id, const QmmlModule* module);
/* From the library's own table, ids 12288 to 12297, in French. */
QMML_API char* szGetStringFUNC(unsigned id);
/* The ring's next buffer, its contents unspecified. */
QMML_API char* szGetStringBuffer(void);

/* ---- Bounded strings ----
 * Each returns dst, or the text it looked at. A null text counts as empty, and nothing is written to a null dst.
 * White space: blank, tab, line feed, vertical tab, form feed, carriage return. */

/* Copies at most n - 1 characters, fills up with zeros and ends dst[n - 1] with a zero. n < 1: nothing. */
QMML_API char* Lstrcpyn(char* dst, const char* src, int n);
/* Appends at most n - 1 characters with a zero behind them and another at the old length + n - 1, so dst must hold the
 * old length + n bytes. n < 2: nothing. */
QMML_API char* Lstrncat(char* dst, const char* src, int n);

#ifdef __cplusplus
#define QMML_INOUT_INT int&
#else
#define QMML_INOUT_INT int*
#endif
/* Fills exactly n bytes, characters and then zeros: unterminated when src has n characters or more. Sets n to the
 * number of characters copied. n < 1: sets n to 0 and writes nothing. */
QMML_API char* Lstrcpynz(char* dst, const char* src, QMML_INOUT_INT n);
/* Appends at most n characters and a zero, and sets n to the new length. n < 1: only sets n. */
QMML_API char* Lstrncatz(char* dst, const char* src, QMML_INOUT_INT n);
#undef QMML_INOUT_INT

/* The first character that is not white space, or the end. */
QMML_API char* Lstrpreclip(const char* s);
/* Cuts trailing white space off in place. */
QMML_API char* Lstrclip(char* s);

QMML_END_C

#ifdef __cplusplus
/* The loaders above as string objects; they advance the ring too. Out of memory gives an empty string. */
QMML_API CString strLoadResString(const QmmlModule* module, int id);
QMML_API CString strGetString(unsigned id, const QmmlModule* module);
QMML_API CString strGetStringFUNC(unsigned id);
#endif

#endif

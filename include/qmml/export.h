/* qmml/export.h: how every export is marked. */
#ifndef QMML_EXPORT_H
#define QMML_EXPORT_H

#if defined(_WIN32)
#ifdef QMML_BUILDING
#define QMML_API __declspec(dllexport)
#else
#define QMML_API __declspec(dllimport)
#endif
#else
#define QMML_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define QMML_BEGIN_C extern "C" {
#define QMML_END_C }
#else
#define QMML_BEGIN_C
#define QMML_END_C
#endif

#endif

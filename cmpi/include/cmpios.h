/* cmpios.h: the operating system types that cross the CMPI tables. */
#ifndef _CMPIOS_H_
#define _CMPIOS_H_

#include <stdlib.h>

#define CMPI_THREAD_RETURN void*
#define CMPI_THREAD_TYPE void*
#define CMPI_MUTEX_TYPE void*
#define CMPI_COND_TYPE void*
#define CMPI_THREAD_CDECL
/* Four bytes: servers store no more through the pointer given to createThreadKey. */
#define CMPI_THREAD_KEY_TYPE unsigned int

#define CMPI_EXPORT __attribute__((visibility("default")))
#ifdef __cplusplus
#define CMPI_EXTERN_C extern "C" CMPI_EXPORT
#else
#define CMPI_EXTERN_C CMPI_EXPORT
#endif

#endif

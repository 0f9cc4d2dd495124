/* cmpipl.h: the platform that these headers are laid out for. */
#ifndef _CMPIPL_H_
#define _CMPIPL_H_

#if !defined(__linux__) || !defined(__x86_64__)
#error "the CMPI tables are laid out for x86-64 Linux"
#endif

#ifndef CMPI_PLATFORM_LINUX_GENERIC_GNU
#define CMPI_PLATFORM_LINUX_GENERIC_GNU 1
#endif

#endif

/* Which build of the library a program has loaded. */
#ifndef ZVPCV_VERSION_H
#define ZVPCV_VERSION_H

#include <zvpcv/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The numbers repeat versionText: major.minor.update, and revision after the "r". */
typedef struct LibraryVersion {
  int32_t major;
  int32_t minor;
  int32_t update;
  int32_t revision;
  char cpuCode[4];  /* code of the processor family the build needs, padded with zero bytes */
  const char* name; /* product, processor family and its code */
  const char* versionText;
  const char* buildDate;
} LibraryVersion;

/* Returns the library's constant version record: the same pointer on every call, never null. The record lives as long
 * as the library is loaded; do not free it. Cannot fail. */
ZVP_API const LibraryVersion* zvpcvGetLibVersion(void);

#ifdef __cplusplus
}
#endif

#endif

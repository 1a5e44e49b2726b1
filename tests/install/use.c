#include <stdio.h>
#include <zvpcore/zvpcore.h>
#include <zvpcv/zvpcv.h>

int main(void) {
  const unsigned char a[3] = {10, 20, 30}, b[3] = {13, 20, 25};
  unsigned char dst[3];
  RoiSize roi = {3, 1};
  if (zvpiAbsDiff_8u_C1R(a, 3, b, 3, dst, 3, roi) != StatusOk) return 1;
  printf("%s: %d %d %d\n", zvpcvGetLibVersion()->name, dst[0], dst[1], dst[2]);
  return dst[0] == 3 && dst[1] == 0 && dst[2] == 5 ? 0 : 1;
}

/* Uses the installed library from plain C99. */
#include <stdio.h>
#include <vqcj.h>

int main(void) {
    const VqcLibraryVersion* v = vqcjGetLibVersion();
    Vqc8u src[4] = {0, 127, 128, 255};
    Vqc16s mid[4];
    Vqc8u back[4];
    VqciSize roi = {4, 1};
    if (vqciSub128_JPEG_8u16s_C1R(src, 4, mid, 8, roi) != vqcStatusOk) return 1;
    if (vqciAdd128_JPEG_16s8u_C1R(mid, 8, back, 4, roi) != vqcStatusOk) return 2;
    if (mid[0] != -128 || mid[3] != 127 || back[1] != 127) return 3;
    if (vqciSub128_JPEG_8u16s_C1R(NULL, 4, mid, 8, roi) != vqcStatusNullPtr) return 4;
    printf("%s %d.%d ok\n", v->version, v->major, v->minor);
    return 0;
}

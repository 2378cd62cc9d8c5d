// libjpeg reports a fatal error through a callback that must not return:
// this one jumps back to the setjmp of whoever installed it.
#pragma once

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

namespace vqcjphoto {

struct JpegErrorJump {
    jpeg_error_mgr mgr;
    jmp_buf jump;

    jpeg_error_mgr* install() {
        jpeg_std_error(&mgr);
        mgr.error_exit = [](j_common_ptr c) { longjmp(reinterpret_cast<JpegErrorJump*>(c->err)->jump, 1); };
        return &mgr;
    }
};

}  // namespace vqcjphoto

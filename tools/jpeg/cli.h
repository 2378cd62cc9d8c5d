#pragma once

namespace vqcjpeg {
// argv[0] is the word after `jpeg`.
int jpegMain(int argc, char** argv);
}

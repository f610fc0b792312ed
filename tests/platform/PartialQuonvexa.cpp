// A library under the process utility library's file name that has only one of its functions,
// for the loader's test of a missing function.

#include <stdint.h>

extern "C" __attribute__((visibility("default"))) int32_t GetParentProcessID(int32_t)
{
    return 4711;
}

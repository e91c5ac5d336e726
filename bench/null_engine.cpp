#include "null_engine.h"

extern "C" int32_t VNTLEXID(uint32_t, void *, void *, uint32_t *, void *, int32_t, int32_t, void *) {
    return 0;
}

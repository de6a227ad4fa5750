// The library's version, as the header it was built with gives it.
#include "cycbcr.h"

extern "C" {

CYCBCR_API const char* cycbcr_version(void) {
    return CYCBCR_VERSION_STRING;
}

CYCBCR_API unsigned int cycbcr_version_number(void) {
    return CYCBCR_VERSION;
}

}  // extern "C"

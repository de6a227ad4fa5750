// Helpers defined in headers are forced inline: an out-of-line copy made in an
// AVX2 object could be the one the linker keeps for the plain objects too.
#pragma once

#define CYCBCR_INLINE [[gnu::always_inline]] inline

#include "torgb/colour_tables.h"

namespace cycbcr::colour {

void get_coeffs(QBYCBCRMatrix matrix, double* yGain, double* crToR, double* crToG, double* cbToG,
                double* cbToB, double* yOffset) {
    const ToRgbRow<double>& r = kMaster[matrix];
    *yGain = r.yGain;
    *crToR = r.crToR;
    *crToG = r.crToG;
    *cbToG = r.cbToG;
    *cbToB = r.cbToB;
    *yOffset = r.yOffset;
}

void fill_p2rgb8(RGB8Mtx* out, QBYCBCRMatrix matrix) {
    const ToRgbRow<int32_t>& r = kQ14[matrix];
    *out = {r.yGain, r.crToR, r.crToG, r.cbToG, r.cbToB, r.yOffset, 128, 0};
}

}  // namespace cycbcr::colour

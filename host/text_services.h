// Host text services: number-to-text conversion and the NaN value. Later
// the host code page and its conversion join them here.
#ifndef VESK_HOST_TEXT_SERVICES_H
#define VESK_HOST_TEXT_SERVICES_H

// The quiet NaN.
double VeskNaN();

// The text of `value` as a heap text from Pelgc::SystemNew, which the caller
// releases with Pelgc::SystemDelete; null when the heap gives no block.
// The shortest digits that read back as `value`, in plain notation for
// 1e-6 <= |value| < 1e21 and as "1.5e-7" or "1e+21" outside; "NaN",
// "Infinity", "-Infinity", and "0" for both zeros.
char* ConvertDoubleToString(double value);

#endif  // VESK_HOST_TEXT_SERVICES_H

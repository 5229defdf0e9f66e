// Host text services: number-to-text conversion and the NaN value. Later
// the host code page and its conversion join them here.
#ifndef VESK_HOST_TEXT_SERVICES_H
#define VESK_HOST_TEXT_SERVICES_H

// The quiet NaN.
double VeskNaN();

#endif  // VESK_HOST_TEXT_SERVICES_H

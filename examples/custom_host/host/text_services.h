// This host's text services: one code page (ISO-8859-1, one byte per
// character), number-to-text conversion and the NaN value.
#ifndef CUSTOM_HOST_TEXT_SERVICES_H
#define CUSTOM_HOST_TEXT_SERVICES_H

double VeskNaN();

// A heap text from Pelgc::SystemNew, or null.
char* ConvertDoubleToString(double value);

// UTF-8 text in the code page as a heap text, characters beyond U+00FF as
// '?'; null for text that is not UTF-8 (the module then sends its bytes).
char* CreateMBCSFromUTF8(const char* utf8, bool terminate);

// Always 1: the code page has no multibyte characters.
int PlayerBytesInChar(unsigned char lead);

#endif  // CUSTOM_HOST_TEXT_SERVICES_H

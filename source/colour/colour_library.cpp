// What the routines that go through the system's colour library share.
#include "colour/colour_library.h"

#include <cstddef>

#include "frame/text.h"

namespace pikel {

namespace {

template <std::size_t size>
void FillWide(LPCSTR lpszText, WCHAR (&wszBuffer)[size]) {
    Platform().MultiByteToWideChar(Platform().GetACP(), 0, TextOrEmpty(lpszText), -1, wszBuffer,
                                   static_cast<int>(size) - 1);
}

}  // namespace

WideColourNames::WideColourNames(LPCSTR lpszProfile, LPCSTR lpszPrinterName) {
    FillWide(lpszProfile, m_wszProfile);
    FillWide(lpszPrinterName, m_wszDevice);
}

}  // namespace pikel

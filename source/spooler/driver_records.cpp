// Reading the spooler's records of drivers.
#include "spooler/driver_records.h"

#include "frame/path.h"

namespace pikel {

DWORD EnumDriverRecords(LPCSTR lpszEnvironment, DWORD dwLevel, HeapBlock& drivers, DWORD* pdwCount) {
    DWORD dwReturned = 0;
    const DWORD dwStatus = ReadSpoolerBlock(drivers, [&](LPBYTE pBuffer, DWORD cbBuffer, LPDWORD pcbNeeded) {
        return Platform().EnumPrinterDriversA(nullptr, const_cast<LPSTR>(lpszEnvironment), dwLevel, pBuffer, cbBuffer,
                                              pcbNeeded, &dwReturned);
    });
    *pdwCount = drivers ? dwReturned : 0;
    return dwStatus;
}

void TakeDriverFile(LPSTR lpszFile, StringList* pFiles) {
    if (IsEmpty(lpszFile)) {
        return;
    }
    UpperCase(lpszFile);
    if (pFiles != nullptr) {
        pFiles->Append(std::string(BehindLastBackslash(lpszFile)));
    }
}

void UpperCase(LPSTR lpszText) {
    for (; *lpszText != '\0'; ++lpszText) {
        const BYTE byte = static_cast<BYTE>(*lpszText);
        // Lead bytes lie above ASCII in every code page.
        if (byte >= 0x80 && lpszText[1] != '\0' && Platform().IsDBCSLeadByte(byte)) {
            ++lpszText;
        } else if (*lpszText >= 'a' && *lpszText <= 'z') {
            *lpszText = static_cast<char>(*lpszText - 'a' + 'A');
        }
    }
}

}  // namespace pikel

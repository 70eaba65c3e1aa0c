// The colour profiles that a printer reports, through an information context of GDI.
#include "colour/printer_profiles.h"

#include <exception>

#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr char kPrinterDriver[] = "WINSPOOL";

struct ContextCloser {
    using Value = HDC;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().DeleteDC(value); }
};
using DeviceContext = Owned<ContextCloser>;

/// What the enumeration hands to its callback.
struct Collection {
    StringList* pProfiles;
    std::exception_ptr failure;  ///< kept here: an exception must not cross the system's frames
};

int CALLBACK TakeProfile(LPSTR lpszProfile, LPARAM lParam) {
    auto* pCollection = reinterpret_cast<Collection*>(lParam);
    try {
        pCollection->pProfiles->Append(TextOrEmpty(lpszProfile));
        return 1;
    } catch (...) {
        pCollection->failure = std::current_exception();
        return 0;
    }
}

}  // namespace

void CollectPrinterProfiles(LPCSTR lpszPrinterName, StringList& profiles) {
    profiles.Clear();
    const DeviceContext context(Platform().CreateICA(kPrinterDriver, lpszPrinterName, nullptr, nullptr));
    if (!context) {
        return;
    }
    Collection collection{&profiles, nullptr};
    Platform().EnumICMProfilesA(context.Get(), &TakeProfile, reinterpret_cast<LPARAM>(&collection));
    if (collection.failure) {
        std::rethrow_exception(collection.failure);
    }
}

}  // namespace pikel

// What the benchmarks share: a fresh machine, and an INF of any size.
#pragma once

#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "frame/os_identity.h"
#include "machine/base/machine.h"
#include "machine/files/files.h"
#include "machine/system/systems.h"

namespace pikel::benchmarks {

/// A fresh xp machine in a temporary folder, current as long as it lives.
class FreshMachine {
  public:
    FreshMachine() {
        std::string pattern = (std::filesystem::temp_directory_path() / "pikel-benchmark-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        m_machine = simulated::Machine::Create(m_folder / "machine", *simulated::FindSystem("xp"));
        simulated::Use(m_machine.get());
        ForgetSystemRecords();
    }
    ~FreshMachine() {
        simulated::Use(nullptr);
        m_machine.reset();
        std::filesystem::remove_all(m_folder);
    }
    FreshMachine(const FreshMachine&) = delete;
    FreshMachine& operator=(const FreshMachine&) = delete;

    simulated::Machine* operator->() { return m_machine.get(); }

  private:
    std::filesystem::path m_folder;
    std::unique_ptr<simulated::Machine> m_machine;
};

/// Name of the nth model of an INF of MakeInf.
inline std::string ModelName(std::int64_t number) {
    return "Aurora " + std::to_string(number) + " PCL";
}

/// An INF with a models section and an install section for each model, in the manner of a printer maker's.
inline std::string MakeInf(std::int64_t models) {
    std::string text =
        "; Printer driver\r\n[Version]\r\nSignature=\"$Windows NT$\"\r\nClass=Printer\r\n"
        "ClassGUID={4D36E979-E325-11CE-BFC1-08002BE10318}\r\nProvider=%Maker%\r\nDriverVer=07/03/2004,1.2.3.4\r\n\r\n"
        "[Manufacturer]\r\n%Maker%=Models\r\n\r\n[Models]\r\n";
    for (std::int64_t model = 0; model < models; ++model) {
        const std::string number = std::to_string(model);
        text += "\"" + ModelName(model) + "\"\t= Install_" + number + ",USBPRINT\\AURORA_" + number + ",AURORA_" +
                number + "\r\n";
    }
    for (std::int64_t model = 0; model < models; ++model) {
        const std::string number = std::to_string(model);
        text += "\r\n[Install_" + number + "]\r\nCopyFiles=@A" + number +
                ".GPD,CommonFiles\r\nDataSection=CommonData\r\nDataFile=A" + number +
                ".GPD\r\n; what the monitor needs\r\nLanguageMonitor=%Monitor%,AURORAMN.DLL\r\nRetryTimeout=90\r\n";
    }
    return text +
           "\r\n[CommonData]\r\nDriverFile=AURORA.DLL\r\nConfigFile=AURORAUI.DLL\r\nHelpFile=AURORA.HLP\r\n"
           "\r\n[CommonFiles]\r\nAURORA.DLL\r\nAURORAUI.DLL\r\nAURORA.HLP\r\nRES.DLL\r\n"
           "\r\n[DestinationDirs]\r\nDefaultDestDir=66000\r\n\r\n[Strings]\r\nMaker=\"Nimbus\"\r\nMonitor=\"Aurora "
           "Monitor\"\r\n";
}

}  // namespace pikel::benchmarks

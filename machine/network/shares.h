// What the machine shares with other computers, 9x family. A share that the system starts with is a key
//
//   HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Network\LanMan\<share>
//
// with the numbers Flags and Type and the texts Path and Remark. From then on the network library has its shares in
// memory: adding or deleting one there leaves that key alone, and writing the key shares nothing before the next start.
// The memory of the machine, which must outlive a process, is the key
//
//   HKLM\SOFTWARE\Simulated Network\Shares\<share>
//
// with the same values and the texts Read Write Password and Read Only Password. It comes with the first change.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "machine/base/machine.h"

namespace pikel::simulated {

struct Share {
    std::string name;
    BYTE type = 0;   ///< 0 folder, 1 printer, 2 device, 3 communication
    WORD flags = 0;  ///< 1 read, 2 everything, 3 by password; 0x100 also after a restart
    std::string remark;
    std::string path;  ///< of a printer its name
    std::string readWritePassword;
    std::string readOnlyPassword;
};

class Shares {
  public:
    /// Longest name and password, in bytes.
    static constexpr std::size_t kLongestName = 12;
    static constexpr std::size_t kLongestPassword = 8;

    explicit Shares(Machine& machine) : m_machine(machine) {}

    std::optional<Share> Find(std::string_view name) const;
    /// @return 0; 123 for an impossible name; 87 for an unknown type; 2116 without a path; 2118 for a name that is
    ///         taken
    DWORD Add(const Share& share);
    /// Gives a share other settings. Its name and type stay. @return 0; 2310 for an unknown one; 2116 without a path
    DWORD Change(std::string_view name, const Share& share);
    /// @return 0, or 2310 for an unknown one
    DWORD Remove(std::string_view name);
    /// The system's start: what is shared then is what it starts with. The caller commits.
    void StartAnew();

    /// Key of a share that the system starts with.
    static std::string StartKeyOf(std::string_view name);

  private:
    void TakeUpStarted();
    void Write(const Share& share);

    Machine& m_machine;
};

}  // namespace pikel::simulated

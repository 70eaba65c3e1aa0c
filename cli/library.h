// The library, loaded at run time from beside the tool, as an installer loads it.
#pragma once

#include "frame/pikel.h"

namespace pikel::cli {

class Library {
  public:
    /// Loads the library and brings it up. Throws ToolError.
    Library();
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    const PI_KEL_Interface& Table() const { return *m_table; }

  private:
    void* m_module = nullptr;
    const PI_KEL_Interface* m_table = nullptr;
};

}  // namespace pikel::cli

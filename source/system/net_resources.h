// Browses the network for shared printers, one level at a time.
#pragma once

#include "frame/pikel.h"

namespace pikel {

/// Lists what stands below a node of the network. The 9x family asks its network providers, every other system the
/// spooler.
///
/// @param pParent         a record of an earlier call, or null for the top
/// @param ppBlock [out]   one heap block: *pdwCount records, then their texts. It is there after every success, also
///                        for a node without children. Freed with PI_KEL_FreeMemory. Required; cleared first.
/// @param pdwCount [out]  records in the block. Required; cleared first.
/// @return 0, also for a parent that is no container on the 9x family; 87 for a null out pointer; 8 without memory;
///         else the code of the network or the spooler. A network provider that fails at the top is passed over.
DWORD DoEnumNetResources(const NetResourceRecord* pParent, NetResourceRecord** ppBlock, DWORD* pdwCount);

}  // namespace pikel

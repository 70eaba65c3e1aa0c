// The entry point of the DLL: which handle is kept from attach to detach. The entry is built for Windows alone, so it
// is taken in here by its source, over the few things that it needs of Windows.
#include "frame/os_identity.h"
#include "support/machine_test.h"

// As <winnt.h> has them.
#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3

namespace {
HMODULE g_quietModule = nullptr;
BOOL DisableThreadLibraryCalls(HMODULE module) {
    g_quietModule = module;
    return TRUE;
}
}  // namespace

#include "table/module_windows.cpp"

namespace pikel::testing_support {
namespace {

class ModuleEntry : public MachineTest {
  protected:
    ModuleEntry() { g_quietModule = nullptr; }
    ~ModuleEntry() override {
        SetAttachedModule(nullptr);
        KeepModule();
    }
    BOOL Enter(DWORD reason) { return DllMain(m_module, reason, nullptr); }
    /// The handle that the next bring-up would work with.
    static HMODULE Attached() {
        KeepModule();
        return GetKeptModule();
    }

    HINSTANCE m_module = reinterpret_cast<HINSTANCE>(0x10000000);
};

TEST_F(ModuleEntry, AttachKeepsTheHandleAndDetachClearsIt) {
    EXPECT_EQ(Enter(DLL_PROCESS_ATTACH), TRUE);
    EXPECT_EQ(Attached(), m_module);
    EXPECT_EQ(Enter(DLL_PROCESS_DETACH), TRUE);
    EXPECT_EQ(Attached(), nullptr);
}

TEST_F(ModuleEntry, ThreadsChangeNothing) {
    EXPECT_EQ(Enter(DLL_PROCESS_ATTACH), TRUE);
    EXPECT_EQ(g_quietModule, m_module);
    EXPECT_EQ(Enter(DLL_THREAD_ATTACH), TRUE);
    EXPECT_EQ(Attached(), m_module);
    EXPECT_EQ(Enter(DLL_THREAD_DETACH), TRUE);
    EXPECT_EQ(Attached(), m_module);
}

TEST_F(ModuleEntry, DoesNoOtherWork) {
    Test().TakeCalls();
    Enter(DLL_PROCESS_ATTACH);
    Enter(DLL_PROCESS_DETACH);
    EXPECT_THAT(Test().TakeCalls(), ::testing::IsEmpty());
}

}  // namespace
}  // namespace pikel::testing_support

#include "machine/base/handles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace pikel::simulated {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(Handles, AreSmallMultiplesOf4AndNeverUsedTwice) {
    Handles handles;
    const void* last = nullptr;
    for (int i = 0; i < 10; ++i) {
        void* handle = handles.Open(HandleKind::File, nullptr, "x");
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(handle) % 4, 0u);
        EXPECT_LT(reinterpret_cast<std::uintptr_t>(handle), 0x10000u);
        EXPECT_GT(handle, last);
        last = handle;
        EXPECT_TRUE(handles.Close(HandleKind::File, handle));
    }
}

TEST(Handles, FindTheirObjectByKind) {
    Handles handles;
    void* handle = handles.Open(HandleKind::Printer, std::make_shared<int>(5), "Acme");
    ASSERT_NE(handles.Find<int>(HandleKind::Printer, handle), nullptr);
    EXPECT_EQ(*handles.Find<int>(HandleKind::Printer, handle), 5);
    EXPECT_EQ(handles.Find<int>(HandleKind::File, handle), nullptr);
    EXPECT_EQ(handles.Find<int>(HandleKind::Printer, nullptr), nullptr);
    EXPECT_THAT(handles.Misuses(), IsEmpty());
    EXPECT_TRUE(handles.Close(HandleKind::Printer, handle));
    EXPECT_EQ(handles.Find<int>(HandleKind::Printer, handle), nullptr);
}

TEST(Handles, ReleaseTheirObjectAtTheClose) {
    Handles handles;
    auto object = std::make_shared<int>(1);
    void* handle = handles.Open(HandleKind::Inf, object, "x");
    EXPECT_EQ(object.use_count(), 2);
    EXPECT_TRUE(handles.Close(HandleKind::Inf, handle));
    EXPECT_EQ(object.use_count(), 1);
}

TEST(Handles, RefuseAndNoteAWrongCloserAndADoubleClose) {
    Handles handles;
    void* handle = handles.Open(HandleKind::RegistryKey, nullptr, "HKLM\\Software");
    EXPECT_FALSE(handles.Close(HandleKind::File, handle));
    EXPECT_EQ(handles.OpenCount(), 1u);
    EXPECT_TRUE(handles.Close(HandleKind::RegistryKey, handle));
    EXPECT_FALSE(handles.Close(HandleKind::RegistryKey, handle));
    EXPECT_THAT(handles.Misuses(), ElementsAre(HasSubstr("as file, which is a registry key HKLM\\Software"),
                                               HasSubstr("as registry key, which is not open")));
}

TEST(Handles, CountAndDescribeWhatIsOpen) {
    Handles handles;
    void* file = handles.Open(HandleKind::File, nullptr, "C:\\a");
    void* module = handles.Open(HandleKind::Module, nullptr, "winspool.drv");
    EXPECT_EQ(handles.OpenCount(), 2u);
    EXPECT_EQ(handles.OpenCount(HandleKind::File), 1u);
    EXPECT_EQ(handles.OpenCount(HandleKind::Find), 0u);
    EXPECT_THAT(handles.Describe(), ElementsAre("file C:\\a", "library winspool.drv"));
    EXPECT_TRUE(handles.Close(HandleKind::File, file));
    EXPECT_TRUE(handles.Close(HandleKind::Module, module));
    EXPECT_THAT(handles.Describe(), IsEmpty());
}

}  // namespace
}  // namespace pikel::simulated

// The library loaded by hand, used, given back and loaded again, in a process that goes on.
#include <dlfcn.h>
#include <gtest/gtest.h>

namespace {

TEST(Unloading, IsHarmlessWhileThreadsOfTheLibraryRun) {
  void* first = nullptr;
  for (int i = 0; i < 3; ++i) {
    void* const library = dlopen(LIRVOX_C_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(library) << dlerror();
    const auto instance = reinterpret_cast<void* (*)()>(dlsym(library, "lirvox_shared_instance"));
    const auto replay =
        reinterpret_cast<int (*)(void*)>(dlsym(library, "lirvox_start_recognize_from_file"));
    ASSERT_TRUE(instance && replay);
    if (!first) first = instance();
    EXPECT_EQ(instance(), first);
    EXPECT_EQ(replay(instance()), 0);  // its threads are busy from now on
    EXPECT_EQ(dlclose(library), 0);
  }
}

}  // namespace

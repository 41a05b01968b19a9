// The operators new and delete on coredll's heap. The library allocates only with std::nothrow.
#include <cstdlib>
#include <new>

const std::nothrow_t std::nothrow{};

namespace {

/// Allocates at least one byte: malloc(0) may return null, which means that there is no memory.
void* allocate(size_t size) { return malloc(size > 0 ? size : 1); }

}  // namespace

void* operator new(size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return allocate(size); }

void operator delete(void* memory) noexcept { free(memory); }
void operator delete[](void* memory) noexcept { free(memory); }
void operator delete(void* memory, size_t) noexcept { free(memory); }
void operator delete[](void* memory, size_t) noexcept { free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { free(memory); }

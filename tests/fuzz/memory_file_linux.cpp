#include "fuzz/memory_file.h"

#include <cerrno>
#include <system_error>

#include <sys/mman.h>

namespace boxlift::test {

worker::Descriptor memoryFile(std::string_view bytes) {
    worker::Descriptor file(::memfd_create("boxlift", MFD_CLOEXEC));
    if (!file)
        throw std::system_error(errno, std::generic_category(), "memfd_create");
    while (!bytes.empty()) {
        const ssize_t count = ::write(file.get(), bytes.data(), bytes.size());
        if (count <= 0)
            throw std::system_error(errno, std::generic_category(), "writing to memory");
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return file;
}

} // namespace boxlift::test

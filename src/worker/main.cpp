#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <sys/socket.h>

#include "worker/limits.h"
#include "worker/parent.h"
#include "worker/protocol/channel.h"
#include "worker/protocol/role.h"
#include "worker/sandbox.h"
#include "worker/service.h"

namespace {

using namespace boxlift::worker;

std::optional<Role> roleOf(std::span<char*> arguments) {
    if (arguments.size() == 2)
        for (const Role role : allRoles)
            if (std::string_view(arguments[1]) == name(role))
                return role;
    return std::nullopt;
}

bool isSocket(int descriptor) {
    int type = 0;
    socklen_t size = sizeof type;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
}

void work(Role role) {
    ignoreForeignSignals();
    askToBeEnded();
    limitResources(role);
    const std::string missing = enterSandbox();
    endWithParent(socketDescriptor);
    Channel channel(Descriptor(socketDescriptor), Channel::Takes::descriptorsToo);
    serve(channel, missing);
}

} // namespace

int main(int argc, char** argv) {
    const auto role = roleOf(std::span(argv, static_cast<std::size_t>(argc)));
    if (!role || !isSocket(socketDescriptor)) {
        std::fputs("boxlift-worker is started by Boxlift.\n", stderr);
        return EXIT_FAILURE;
    }
    try {
        work(*role);
    } catch (const Channel::Broken&) {
        // The application needs it no more.
        std::_Exit(EXIT_SUCCESS);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "boxlift-worker: %s\n", error.what());
        std::_Exit(EXIT_FAILURE);
    }
}

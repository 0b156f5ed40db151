// A process that writes a file through a SafeFileWriter and then either
// waits to be killed or runs into a write failure. The writer tests start it.
//   platform_writer_child hang <destination> [named]
//       writes 1 MiB, prints "ready", waits forever
//   platform_writer_child limit <destination>
//       allows itself files of 4 KiB, writes 64 KiB, prints the failure
#include "platform/OrlFiles/Exception.h"
#include "platform/OrlFiles/SafeFileWriter.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc < 3)
        return 2;
    const std::string mode = argv[1];
    const auto destination = OrlFiles::Path::parse(std::string_view(argv[2]));
    const auto kind = argc > 3 && std::strcmp(argv[3], "named") == 0 ? OrlFiles::SafeFileWriter::Temporary::named
                                                                      : OrlFiles::SafeFileWriter::Temporary::unnamedWherePossible;
    const std::string block(1024, 'n');
    if (mode == "hang") {
        OrlFiles::SafeFileWriter writer(destination, kind);
        for (int i = 0; i < 1024; ++i)
            writer.write(block);
        std::printf("ready %s\n", writer.temporary().utf8().c_str());
        std::fflush(stdout);
        for (;;)
            pause();
    }
    if (mode == "limit") {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        try {
            OrlFiles::SafeFileWriter writer(destination, kind);
            for (int i = 0; i < 64; ++i)
                writer.write(block);
            writer.commit();
            std::printf("committed\n");
        } catch (const OrlFiles::Exception& e) {
            std::printf("%s\n", e.what());
        }
        return 0;
    }
    return 2;
}

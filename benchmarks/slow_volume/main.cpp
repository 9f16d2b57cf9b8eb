#include <getopt.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "benchmarks/slow_volume/SlowVolume.h"

namespace {

using slowvolume::Options;
using slowvolume::SlowVolume;

constexpr char kUsage[] =
    "usage: slow-volume SOURCE MOUNTPOINT [options]\n"
    "Shows the folder SOURCE at MOUNTPOINT as a volume on which every operation takes its time.\n"
    "Stays in the foreground, prints \"mounted\" when it is there, and unmounts on SIGTERM or SIGINT.\n"
    "  --delay-ms N       what an operation costs; 10\n"
    "  --cache-seconds S  how long the kernel may keep names and attributes; 1\n"
    "  --keep-absence     keeps as long that a name is not there\n"
    "  --threads N        most operations at a time; 64\n"
    "  --rename-flags     knows renaming without replacing (RENAME_NOREPLACE)\n"
    "  --no-links         knows no hard links\n"
    "  --fail RULE        fails every n-th call of an operation, before it is done, or after, as when a reply is\n"
    "                     lost (create, link, mkdir, rename, rmdir, symlink, unlink, write, fsync, fsyncdir);\n"
    "                     \"link:3:5:after\" is operation, n, errno; \"link:3:5:after:once\" the third call only\n"
    "  --arm NAME         the rules count from the first look at NAME on\n"
    "  --statistics       prints at the end how often each operation was asked for, and how often each rule failed\n"
    "                     one\n";

bool ParseFault(const std::string& rule, Options& options) {
    std::istringstream text(rule);
    std::string operation, moment, often;
    slowvolume::Fault fault{};
    char colon = 0;
    if (!std::getline(text, operation, ':') || !(text >> fault.mEvery >> colon >> fault.mError >> colon))
        return false;
    std::getline(text, moment, ':');
    std::getline(text, often);
    const auto found = slowvolume::FindOperation(operation);
    fault.mIsAfter = moment == "after";
    fault.mIsOnce = often == "once";
    if (!found || fault.mEvery == 0 || fault.mError <= 0 || (!fault.mIsAfter && moment != "before") ||
        (!fault.mIsOnce && !often.empty()))
        return false;
    fault.mOperation = *found;
    options.mFaults.push_back(fault);
    return true;
}

bool ParseOptions(int argc, char** argv, Options& options) {
    const option longOptions[] = {
        {"delay-ms", required_argument, nullptr, 'd'}, {"cache-seconds", required_argument, nullptr, 'c'},
        {"keep-absence", no_argument, nullptr, 'a'},   {"threads", required_argument, nullptr, 't'},
        {"rename-flags", no_argument, nullptr, 'r'},   {"no-links", no_argument, nullptr, 'n'},
        {"fail", required_argument, nullptr, 'f'},     {"arm", required_argument, nullptr, 'm'},
        {"statistics", no_argument, nullptr, 's'},     {nullptr, 0, nullptr, 0}};
    for (int choice; (choice = getopt_long(argc, argv, "", longOptions, nullptr)) != -1;) {
        switch (choice) {
            case 'd':
                options.mDelay = std::chrono::milliseconds(std::atoi(optarg));
                break;
            case 'c':
                options.mCacheSeconds = std::atof(optarg);
                break;
            case 'a':
                options.mKeepsAbsence = true;
                break;
            case 'r':
                options.mHasRenameFlags = true;
                break;
            case 'n':
                options.mHasLinks = false;
                break;
            case 't':
                options.mThreads = static_cast<unsigned>(std::max(1, std::atoi(optarg)));
                break;
            case 'f':
                if (!ParseFault(optarg, options)) return false;
                break;
            case 'm':
                options.mArmingName = optarg;
                break;
            case 's':
                options.mStatistics = true;
                break;
            default:
                return false;
        }
    }
    if (argc - optind != 2) return false;
    options.mSource = argv[optind];
    options.mMountPoint = argv[optind + 1];
    return true;
}

/// Each item that the kernel knows of holds a descriptor.
void RaiseDescriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

int Serve(SlowVolume& volume, fuse_session& session) {
    const std::unique_ptr<fuse_loop_config, void (*)(fuse_loop_config*)> loop(fuse_loop_cfg_create(),
                                                                              fuse_loop_cfg_destroy);
    fuse_loop_cfg_set_max_threads(loop.get(), volume.GetOptions().mThreads);
    fuse_loop_cfg_set_idle_threads(loop.get(), volume.GetOptions().mThreads);
    fuse_loop_cfg_set_clone_fd(loop.get(), 0);
    std::cout << "mounted" << std::endl;
    return fuse_session_loop_mt(&session, loop.get());
}

int Run(const char* program, const Options& options) {
    SlowVolume volume(options);
    const auto operations = volume.MakeOperations();
    const char* arguments[] = {program, "-ofsname=slow-volume,subtype=slow-volume"};
    fuse_args fuseArguments = FUSE_ARGS_INIT(2, const_cast<char**>(arguments));
    fuse_session* session = fuse_session_new(&fuseArguments, &operations, sizeof(operations), &volume);
    if (!session) return 1;
    int result = 1;
    if (fuse_set_signal_handlers(session) == 0) {
        if (fuse_session_mount(session, options.mMountPoint.c_str()) == 0) {
            result = Serve(volume, *session);
            fuse_session_unmount(session);
        }
        fuse_remove_signal_handlers(session);
    }
    fuse_session_destroy(session);
    fuse_opt_free_args(&fuseArguments);
    if (options.mStatistics) volume.PrintStatistics(std::cerr);
    // The loop answers the number of the signal that ended it.
    return result >= 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!ParseOptions(argc, argv, options)) {
        std::cerr << kUsage;
        return 2;
    }
    ::umask(0);
    RaiseDescriptorLimit();
    try {
        return Run(argv[0], options);
    } catch (const std::exception& error) {
        std::cerr << "slow-volume: " << error.what() << '\n';
        return 1;
    }
}

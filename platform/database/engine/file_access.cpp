// SPDX-License-Identifier: GPL-2.0-or-later
// Access to the engine's files (see file_access.hpp).
// Failure policy: what was planted is removed where this process is root's, which is said on standard error,
// and otherwise refused with EACCES: connecting fails.
#include "platform/database/engine/file_access.hpp"

#include "base/box_identity.hpp"
#include "base/fd.hpp"
#include "base/foreign_file.hpp"
#include "base/thread_identity.hpp"
#include "platform/database/engine/sysrepo.hpp"

#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <grp.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace fs = std::filesystem;

namespace tq::db {

namespace {

constexpr mode_t others = S_IRWXO;

// sysrepo clears the mask, makes a file and sets it back.
mode_t guarded_umask(mode_t mask)
{
    return ::umask(mask == 0 ? others : mask);
}

// Whether a stranger's was there and is gone.  EACCES when it is there still.
bool remove_strangers(const std::string &path, uid_t owner)
{
    if (!base::remove_foreign_file(path)) {
        errno = EACCES;
        return false;
    }
    std::fprintf(stderr, "%s was made by user %u, who is not of the box: removed\n", path.c_str(),
                 static_cast<unsigned>(owner));
    return true;
}

// Looked up once: files are opened at every change.
struct Ids {
    std::optional<uid_t> user = base::daemon_uid();
    std::optional<gid_t> group = base::box_gid();
};

const Ids &ids()
{
    static const Ids found;
    return found;
}

// Members have files of their own, for what they subscribe to.  Nobody else can give a file to the group.
bool is_strangers(const struct stat &status)
{
    return status.st_uid != 0 && status.st_uid != ids().user && status.st_gid != ids().group;
}

// Whether this process is one of the box: what another one makes would be taken for a stranger's.
bool is_of_the_box()
{
    const uid_t user = ::geteuid();
    return user == 0 || user == ids().user || !ids().group || ::getegid() == *ids().group ||
           ::group_member(*ids().group) != 0;
}

int open_shared(const char *name, int flags, mode_t mode, const std::string &path, struct stat &status)
{
    const int fd = ::shm_open(name, flags, mode & ~others);
    // In a folder for all, kernels refuse O_CREAT for what exists and is another user's, even to root.
    const bool is_other_user = fd < 0 && errno == EACCES && (flags & O_CREAT) != 0 && (flags & O_EXCL) == 0 &&
                               ::lstat(path.c_str(), &status) == 0 && !is_strangers(status);
    return is_other_user ? ::shm_open(name, flags & ~O_CREAT, 0) : fd;
}

int guarded_shm_open(const char *name, int flags, mode_t mode)
{
    if (!is_of_the_box()) {
        errno = EACCES;
        return -1;
    }
    const std::string path = std::string("/dev/shm/") + (*name == '/' ? name + 1 : name);
    for (int attempt = 0; attempt < 3; ++attempt) {
        struct stat status {};
        base::Fd fd(open_shared(name, flags, mode, path, status));
        const int error = errno;
        const bool is_known = fd ? ::fstat(fd.get(), &status) == 0 : ::lstat(path.c_str(), &status) == 0;
        if (!is_known || !is_strangers(status)) {
            // What root and members make has their group.
            [[maybe_unused]] const bool is_shared =
                fd && ids().group && status.st_gid != *ids().group &&
                ::fchown(fd.get(), static_cast<uid_t>(-1), *ids().group) == 0;
            errno = error;
            return fd.release(); // sysrepo's now
        }
        if (!remove_strangers(path, status.st_uid))
            break;
    }
    return -1;
}

struct Replacement {
    const char *name;
    std::uintptr_t function;
};

// An address as the loader keeps it: a number.
template <class Object>
Object *at(ElfW(Addr) address)
{
    Object *object;
    std::memcpy(&object, &address, sizeof address);
    return object;
}

// The tables of a loaded library.  Its addresses are absolute once it is loaded.
struct Tables {
    const ElfW(Sym) *symbols = nullptr;
    const char *names = nullptr;
    const ElfW(Rela) *calls = nullptr;
    std::size_t call_count = 0;
};

Tables tables_of(const link_map &library)
{
    Tables tables;
    for (const ElfW(Dyn) *entry = library.l_ld; entry->d_tag != DT_NULL; ++entry) {
        const auto address = entry->d_un.d_ptr;
        switch (entry->d_tag) {
        case DT_SYMTAB:
            tables.symbols = at<const ElfW(Sym)>(address);
            break;
        case DT_STRTAB:
            tables.names = at<const char>(address);
            break;
        case DT_JMPREL:
            tables.calls = at<const ElfW(Rela)>(address);
            break;
        case DT_PLTRELSZ:
            tables.call_count = entry->d_un.d_val / sizeof(ElfW(Rela));
            break;
        default:
            break;
        }
    }
    return tables;
}

// A library that was bound when it was loaded has its table write-protected.
bool write_entry(ElfW(Addr) entry, std::uintptr_t function)
{
    const auto page_size = static_cast<ElfW(Addr)>(::sysconf(_SC_PAGESIZE));
    if (::mprotect(at<void>(entry & ~(page_size - 1)), page_size, PROT_READ | PROT_WRITE) != 0)
        return false;
    *at<std::uintptr_t>(entry) = function;
    return true;
}

bool replace_calls(const link_map &library, std::initializer_list<Replacement> replacements)
{
    const Tables tables = tables_of(library);
    if (!tables.symbols || !tables.names || !tables.calls)
        return false;
    std::size_t replaced = 0;
    for (std::size_t i = 0; i < tables.call_count; ++i) {
        const ElfW(Rela) &call = tables.calls[i];
        const std::string_view name = tables.names + tables.symbols[ELF64_R_SYM(call.r_info)].st_name;
        for (const Replacement &one : replacements)
            if (name == one.name && write_entry(library.l_addr + call.r_offset, one.function))
                ++replaced;
    }
    return replaced == replacements.size();
}

bool guard()
{
    Dl_info found{};
    void *library = nullptr;
    if (::dladdr1(reinterpret_cast<void *>(&sr_connect), &found, &library, RTLD_DL_LINKMAP) == 0 || !library)
        return false;
    return replace_calls(*static_cast<const link_map *>(library),
                         {{"umask", reinterpret_cast<std::uintptr_t>(&guarded_umask)},
                          {"shm_open", reinterpret_cast<std::uintptr_t>(&guarded_shm_open)}});
}

void shut(const fs::path &file)
{
    const base::Fd fd(::open(file.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!fd || !ids().group || ::fstat(fd.get(), &status) != 0 || S_ISLNK(status.st_mode) ||
        is_strangers(status))
        return;
    const std::string self = "/proc/self/fd/" + std::to_string(fd.get());
    if (status.st_gid != *ids().group && ::chown(self.c_str(), static_cast<uid_t>(-1), *ids().group) != 0)
        return;
    if ((status.st_mode & others) != 0)
        ::chmod(self.c_str(), status.st_mode & ALLPERMS & ~others);
}

} // namespace

bool guard_files()
{
    static const bool is_guarded = guard();
    return is_guarded;
}

void shut_files()
{
    const char *const set = std::getenv("SYSREPO_SHM_PREFIX");
    const std::string prefix = set ? set : "sr";
    const base::RootIdentity root; // where it can be; the files are those of several users
    shut(sr_get_repo_path());
    std::error_code error;
    for (fs::directory_iterator entry("/dev/shm", error), end; !error && entry != end; entry.increment(error))
        if (entry->path().filename().string().starts_with(prefix + "_") ||
            entry->path().filename().string().starts_with(prefix + "sub_"))
            shut(entry->path());
    for (fs::recursive_directory_iterator entry(sr_get_repo_path(), error), end; !error && entry != end;
         entry.increment(error))
        shut(entry->path());
}

} // namespace tq::db

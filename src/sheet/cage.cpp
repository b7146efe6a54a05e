#include "sheet/cage.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "adapters/spreadsheet/message/messages.h"
#include "sheet/refusal.h"

namespace talvex::sheet {

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#else
#error "The numbers of the system's calls are known for x86-64 and arm64 only"
#endif

constexpr long kRefused[] = {
    // Programs, processes, and what they do to one another.
    SYS_execve, SYS_execveat, SYS_ptrace, SYS_process_vm_readv, SYS_process_vm_writev, SYS_kill, SYS_tkill,
    SYS_pidfd_open, SYS_pidfd_getfd, SYS_pidfd_send_signal, SYS_unshare, SYS_setns,
    // Connections.
    SYS_socket, SYS_socketpair, SYS_connect, SYS_bind, SYS_listen, SYS_accept, SYS_accept4, SYS_sendto,
    SYS_sendmsg, SYS_sendmmsg,
    // Files. Opening them is looked at more closely.
    SYS_truncate, SYS_renameat, SYS_renameat2, SYS_unlinkat, SYS_mkdirat, SYS_mknodat, SYS_linkat,
    SYS_symlinkat, SYS_fchmodat, SYS_fchownat, SYS_fchmod, SYS_fchown, SYS_utimensat, SYS_setxattr,
    SYS_lsetxattr, SYS_fsetxattr, SYS_removexattr, SYS_lremovexattr, SYS_fremovexattr, SYS_mount, SYS_umount2,
    SYS_pivot_root, SYS_chroot, SYS_move_mount, SYS_open_tree, SYS_fsopen, SYS_open_by_handle_at,
#ifdef SYS_open  // The older calls, which newer machines do not have.
    SYS_creat, SYS_rename, SYS_unlink, SYS_mkdir, SYS_rmdir, SYS_mknod, SYS_link, SYS_symlink, SYS_chmod,
    SYS_chown, SYS_lchown, SYS_utime, SYS_utimes, SYS_futimesat, SYS_fork, SYS_vfork,
#endif
    // The kernel itself.
    SYS_bpf, SYS_io_uring_setup, SYS_perf_event_open, SYS_userfaultfd, SYS_keyctl, SYS_add_key,
    SYS_request_key, SYS_init_module, SYS_finit_module, SYS_delete_module, SYS_kexec_load, SYS_reboot,
    SYS_swapon, SYS_swapoff, SYS_acct};

// Newer forms of calls whose arguments a filter cannot see: without them, callers take the older ones.
constexpr long kUnknown[] = {SYS_clone3, SYS_openat2};

constexpr std::uint32_t kRefuse = SECCOMP_RET_ERRNO | EPERM;
constexpr std::uint32_t kForeignCalls = 0x40000000;  // Of the same processor, with numbers of their own.
constexpr std::uint32_t kWriting = O_WRONLY | O_RDWR | O_CREAT | O_TRUNC;

// The half of an argument that holds its flags; both processors keep it first.
constexpr std::uint32_t Argument(std::size_t index) {
  return static_cast<std::uint32_t>(offsetof(seccomp_data, args) + index * sizeof(std::uint64_t));
}

class Filter {
 public:
  void Load(std::size_t offset) { Add(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset), 0, 0); }
  void Return(std::uint32_t action) { Add(BPF_RET | BPF_K, action, 0, 0); }
  void ReturnUnlessEqual(std::uint32_t value, std::uint32_t action) {
    Add(BPF_JMP | BPF_JEQ | BPF_K, value, 1, 0);
    Return(action);
  }
  void ReturnIfEqual(std::uint32_t value, std::uint32_t action) {
    Add(BPF_JMP | BPF_JEQ | BPF_K, value, 0, 1);
    Return(action);
  }
  void ReturnIfAtLeast(std::uint32_t value, std::uint32_t action) {
    Add(BPF_JMP | BPF_JGE | BPF_K, value, 0, 1);
    Return(action);
  }
  // For one call: `has` if an argument has any of the bits, else `has_not`.
  void ByBits(long call, std::size_t argument, std::uint32_t bits, std::uint32_t has, std::uint32_t has_not) {
    Add(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 4);
    Load(Argument(argument));
    Add(BPF_JMP | BPF_JSET | BPF_K, bits, 0, 1);
    Return(has);
    Return(has_not);
  }
  void Install() {
    const sock_fprog program{static_cast<unsigned short>(steps_.size()), steps_.data()};
    if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0) return;
    throw Refusal(adapters::spreadsheet::message::refusals::kInternal,
                  std::string("the system has no filters of calls (") + std::strerror(errno) + ")");
  }

 private:
  void Add(int code, std::uint32_t value, std::uint8_t if_true, std::uint8_t if_false) {
    steps_.push_back({static_cast<std::uint16_t>(code), if_true, if_false, value});
  }

  std::vector<sock_filter> steps_;
};

void FilterCalls() {
  Filter filter;
  filter.Load(offsetof(seccomp_data, arch));
  filter.ReturnUnlessEqual(kArchitecture, SECCOMP_RET_KILL_PROCESS);
  filter.Load(offsetof(seccomp_data, nr));
  filter.ReturnIfAtLeast(kForeignCalls, kRefuse);
  for (const long call : kRefused) filter.ReturnIfEqual(static_cast<std::uint32_t>(call), kRefuse);
  for (const long call : kUnknown) {
    filter.ReturnIfEqual(static_cast<std::uint32_t>(call), SECCOMP_RET_ERRNO | ENOSYS);
  }
  filter.ByBits(SYS_clone, 0, CLONE_THREAD, SECCOMP_RET_ALLOW, kRefuse);
  filter.ByBits(SYS_openat, 2, kWriting, kRefuse, SECCOMP_RET_ALLOW);
#ifdef SYS_open
  filter.ByBits(SYS_open, 1, kWriting, kRefuse, SECCOMP_RET_ALLOW);
#endif
  filter.Return(SECCOMP_RET_ALLOW);
  filter.Install();
}

// Without any rule, what is handled is allowed nowhere.
void ForbidWritingFiles() {
  landlock_ruleset_attr rules{};
  rules.handled_access_fs =
      LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
      LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR |
      LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
      LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
  const auto made = static_cast<int>(syscall(SYS_landlock_create_ruleset, &rules, sizeof rules, 0));
  if (made < 0) return;  // A kernel without them; the filters say the same.
  syscall(SYS_landlock_restrict_self, made, 0);
  close(made);
}

}  // namespace

void EnterCage() {
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
    throw Refusal(adapters::spreadsheet::message::refusals::kInternal,
                  std::string("privileges cannot be given up (") + std::strerror(errno) + ")");
  }
  ForbidWritingFiles();
  FilterCalls();
}

}  // namespace talvex::sheet

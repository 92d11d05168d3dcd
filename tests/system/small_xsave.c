// Runs a command whose ptrace() calls can't ask for the extended processor state.
//
// User-Mode Linux 6.1 has room for less of it than processors with matrix registers have, and ends
// with "ptrace set fp regs failed". When the request fails it falls back to the older form, which
// holds the SSE registers only: programs in such a guest must not use larger ones.
#include <errno.h>
#include <linux/audit.h>
#include <linux/elf.h>
#include <linux/filter.h>
#include <linux/ptrace.h>
#include <linux/seccomp.h>
#include <stddef.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#define LOAD(field) BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, field))
// Goes on with the next line when equal, else `otherwise` lines further.
#define NEEDS(value, otherwise) BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 0, otherwise)

int main(int count, char** arguments) {
  struct sock_filter rules[] = {
      LOAD(nr),
      NEEDS(SYS_ptrace, 6),
      LOAD(args[2]),
      NEEDS(NT_X86_XSTATE, 4),
      LOAD(args[0]),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, PTRACE_GETREGSET, 1, 0),
      NEEDS(PTRACE_SETREGSET, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EIO),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  struct sock_fprog program = {sizeof rules / sizeof *rules, rules};
  if (count < 2) return 2;
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
    perror("seccomp");
    return 3;
  }
  execvp(arguments[1], arguments + 1);
  perror(arguments[1]);
  return 127;
}

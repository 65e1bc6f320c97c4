// Linux implementation of the per-thread fault translator.
//
// Signal and si_code to exception code:
//
//   SIGSEGV  SEGV_BNDERR                  0xC000008C array bounds exceeded
//            every other fault code       0xC0000005 access violation
//            (SEGV_MAPERR, SEGV_ACCERR, SEGV_PKUERR, SI_KERNEL, ...;
//            x86 reports privileged instructions and non-canonical addresses
//            as SIGSEGV with SI_KERNEL, so these are access violations too)
//   SIGBUS   BUS_ADRALN                   0x80000002 datatype misalignment
//            every other fault code       0xC0000006 in page error
//            (BUS_ADRERR, e.g. a mapped file that became shorter,
//            BUS_OBJERR, BUS_MCEERR_*: the page could not be brought in)
//   SIGFPE   FPE_INTDIV                   0xC0000094 integer divide by zero
//            FPE_INTOVF                   0xC0000095 integer overflow
//            FPE_FLTDIV                   0xC000008E float divide by zero
//            FPE_FLTOVF                   0xC0000091 float overflow
//            FPE_FLTUND                   0xC0000093 float underflow
//            FPE_FLTRES                   0xC000008F float inexact result
//            FPE_FLTSUB                   0xC000008C array bounds exceeded
//            every other fault code       0xC0000090 float invalid operation
//            (FPE_FLTINV, FPE_FLTUNK, ...)
//   SIGILL   ILL_PRVOPC, ILL_PRVREG       0xC0000096 private instruction
//            every other fault code       0xC000001D illegal instruction
//
// A signal whose si_code is SI_USER, SI_QUEUE, SI_TKILL or another value
// <= 0 was sent, not raised by a fault, and is never translated. SIGTRAP,
// whose codes would be the breakpoint and single-step codes that a
// translator passes through anyway, is left alone: it belongs to debuggers.
//
// Reported address: ExceptionAddress is the address of the faulting
// instruction, taken from the interrupted context, as Windows reports it.
// It is never 0 for a real fault, so an address of 0 keeps meaning "not
// translated". For an access violation and an in-page error the data address
// that could not be accessed (siginfo_t::si_addr) is ExceptionInformation[1].

#include "platform/SystemExceptions.h"

#include <errno.h>
#include <pthread.h>
#include <signal.h>
#include <ucontext.h>

#include <cstddef>

namespace {

constexpr std::uint32_t kAccessViolation = 0xC0000005;
constexpr std::uint32_t kInPageError = 0xC0000006;
constexpr std::uint32_t kDatatypeMisalignment = 0x80000002;
constexpr std::uint32_t kIllegalInstruction = 0xC000001D;
constexpr std::uint32_t kArrayBoundsExceeded = 0xC000008C;
constexpr std::uint32_t kFloatDivideByZero = 0xC000008E;
constexpr std::uint32_t kFloatInexactResult = 0xC000008F;
constexpr std::uint32_t kFloatInvalidOperation = 0xC0000090;
constexpr std::uint32_t kFloatOverflow = 0xC0000091;
constexpr std::uint32_t kFloatUnderflow = 0xC0000093;
constexpr std::uint32_t kIntegerDivideByZero = 0xC0000094;
constexpr std::uint32_t kIntegerOverflow = 0xC0000095;
constexpr std::uint32_t kPrivateInstruction = 0xC0000096;

// A segmentation fault this close to the stack pointer is taken for a stack
// overflow, which is passed on untranslated: unwinding would have to run on
// the exhausted stack.
constexpr std::uintptr_t kStackOverflowDistance = 64 * 1024;

constexpr int kFaultSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};
constexpr std::size_t kFaultSignalCount = sizeof(kFaultSignals) / sizeof(kFaultSignals[0]);

// The actions that stood before ours, one per entry of kFaultSignals. Written
// once, before our handlers can run, and only read afterwards.
struct sigaction previousActions[kFaultSignalCount];

// The calling thread's translator, and whether the thread is running it.
// Initial-exec TLS needs no allocation on first access, which matters in a
// signal handler.
thread_local _se_translator_function threadTranslator __attribute__((tls_model("initial-exec"))) =
    nullptr;
thread_local bool insideTranslator __attribute__((tls_model("initial-exec"))) = false;

// Marks the thread as inside its translator for as long as the translator
// runs, including while an exception it threw unwinds out of the handler. A
// fault inside the translator is then passed on instead of translated again.
class TranslatorScope {
 public:
  TranslatorScope() { insideTranslator = true; }
  ~TranslatorScope() { insideTranslator = false; }
  TranslatorScope(const TranslatorScope&) = delete;
  TranslatorScope& operator=(const TranslatorScope&) = delete;
};

std::size_t signalIndex(int signalNumber) {
  for (std::size_t i = 0; i < kFaultSignalCount; ++i) {
    if (kFaultSignals[i] == signalNumber) {
      return i;
    }
  }
  return kFaultSignalCount;
}

// The faulting instruction and the stack pointer of the interrupted context;
// null where this architecture is not known (the caller then falls back on
// si_addr and skips the stack-overflow test).
void* instructionPointer(const ucontext_t* context) {
#if defined(__x86_64__)
  return reinterpret_cast<void*>(context->uc_mcontext.gregs[REG_RIP]);
#elif defined(__i386__)
  return reinterpret_cast<void*>(context->uc_mcontext.gregs[REG_EIP]);
#elif defined(__aarch64__)
  return reinterpret_cast<void*>(context->uc_mcontext.pc);
#else
  (void)context;
  return nullptr;
#endif
}

std::uintptr_t stackPointer(const ucontext_t* context) {
#if defined(__x86_64__)
  return static_cast<std::uintptr_t>(context->uc_mcontext.gregs[REG_RSP]);
#elif defined(__i386__)
  return static_cast<std::uintptr_t>(context->uc_mcontext.gregs[REG_ESP]);
#elif defined(__aarch64__)
  return static_cast<std::uintptr_t>(context->uc_mcontext.sp);
#else
  (void)context;
  return 0;
#endif
}

bool looksLikeStackOverflow(int signalNumber, const siginfo_t* info, const ucontext_t* context) {
  if (signalNumber != SIGSEGV) {
    return false;
  }
  const std::uintptr_t sp = stackPointer(context);
  const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
  // An unknown stack pointer (0) is below the distance too.
  if (sp < kStackOverflowDistance) {
    return false;
  }
  return address >= sp - kStackOverflowDistance && address - sp < kStackOverflowDistance;
}

// Hands the signal on as if our handler had never been installed: to the
// handler that stood before ours, or to the default action.
void passOn(int signalNumber, siginfo_t* info, void* context) {
  const std::size_t index = signalIndex(signalNumber);
  const struct sigaction& previous = previousActions[index];
  const bool sent = info->si_code <= 0;
  if ((previous.sa_flags & SA_SIGINFO) != 0) {
    if (previous.sa_sigaction != nullptr) {
      previous.sa_sigaction(signalNumber, info, context);
    }
    return;
  }
  if (previous.sa_handler == SIG_IGN) {
    // A sent signal stays ignored. A real fault cannot be ignored: with the
    // old disposition back, the kernel ends the process when the faulting
    // instruction runs again.
    if (!sent) {
      sigaction(signalNumber, &previous, nullptr);
    }
    return;
  }
  if (previous.sa_handler == SIG_DFL) {
    // Returning re-runs the faulting instruction, which now meets the
    // default action (and dumps core where that is enabled). A sent signal
    // does not come back by itself, so it is raised again; it is delivered
    // once this handler returns and unblocks it.
    sigaction(signalNumber, &previous, nullptr);
    if (sent) {
      raise(signalNumber);
    }
    return;
  }
  previous.sa_handler(signalNumber);
}

void onFaultSignal(int signalNumber, siginfo_t* info, void* rawContext) {
  const int savedErrno = errno;
  auto* context = static_cast<ucontext_t*>(rawContext);
  const std::uint32_t code = msg::platform::exceptionCodeForSignal(signalNumber, info->si_code);
  const _se_translator_function translator = threadTranslator;

  if (code != 0 && translator != nullptr && !insideTranslator &&
      !looksLikeStackOverflow(signalNumber, info, context)) {
    EXCEPTION_RECORD record{};
    record.ExceptionCode = code;
    record.ExceptionAddress = instructionPointer(context);
    if (record.ExceptionAddress == nullptr) {
      record.ExceptionAddress = info->si_addr;
    }
    if (code == kAccessViolation || code == kInPageError) {
      record.NumberParameters = 2;
      record.ExceptionInformation[0] = 0;
      record.ExceptionInformation[1] = reinterpret_cast<std::uintptr_t>(info->si_addr);
    }
    EXCEPTION_POINTERS pointers{&record, rawContext};

    // An exception from the translator leaves this handler without
    // sigreturn, which would leave the fault signal blocked on this thread
    // for good. So the interrupted code's signal mask is put back first, and
    // ours again if the translator returns.
    sigset_t handlerMask;
    pthread_sigmask(SIG_SETMASK, &context->uc_sigmask, &handlerMask);
    {
      TranslatorScope scope;
      translator(code, &pointers);
    }
    pthread_sigmask(SIG_SETMASK, &handlerMask, nullptr);
  }

  passOn(signalNumber, info, rawContext);
  errno = savedErrno;
}

bool installFaultHandlers() {
  for (std::size_t i = 0; i < kFaultSignalCount; ++i) {
    struct sigaction action {};
    action.sa_sigaction = onFaultSignal;
    sigemptyset(&action.sa_mask);
    // SA_ONSTACK: where a thread has an alternate signal stack (sanitizers
    // set one up), the handler runs there, as the one before ours did.
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigaction(kFaultSignals[i], &action, &previousActions[i]);
  }
  return true;
}

}  // namespace

_se_translator_function _set_se_translator(_se_translator_function translator) {
  if (translator != nullptr) {
    static const bool installed = installFaultHandlers();
    (void)installed;
  }
  const _se_translator_function previous = threadTranslator;
  threadTranslator = translator;
  return previous;
}

namespace msg {
namespace platform {

std::uint32_t exceptionCodeForSignal(int signalNumber, int siCode) {
  if (siCode <= 0) {
    return 0;
  }
  switch (signalNumber) {
    case SIGSEGV:
      return siCode == SEGV_BNDERR ? kArrayBoundsExceeded : kAccessViolation;
    case SIGBUS:
      return siCode == BUS_ADRALN ? kDatatypeMisalignment : kInPageError;
    case SIGFPE:
      switch (siCode) {
        case FPE_INTDIV:
          return kIntegerDivideByZero;
        case FPE_INTOVF:
          return kIntegerOverflow;
        case FPE_FLTDIV:
          return kFloatDivideByZero;
        case FPE_FLTOVF:
          return kFloatOverflow;
        case FPE_FLTUND:
          return kFloatUnderflow;
        case FPE_FLTRES:
          return kFloatInexactResult;
        case FPE_FLTSUB:
          return kArrayBoundsExceeded;
        default:
          return kFloatInvalidOperation;
      }
    case SIGILL:
      return (siCode == ILL_PRVOPC || siCode == ILL_PRVREG) ? kPrivateInstruction
                                                            : kIllegalInstruction;
    default:
      return 0;
  }
}

}  // namespace platform
}  // namespace msg

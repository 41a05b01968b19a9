/* A plugin of QEMU's user-mode emulation. It counts how often each instruction of one address range
   is executed, by the first thread and by all others. It is built for the machine that emulates:
     cc -shared -fPIC -O2 bench/arm/image_instructions.c -o counter.so
     qemu-arm -plugin counter.so,base=0x30000000,size=0x20000,out=FILE PROGRAM

   At the end FILE has a line for each executed instruction: offset in hexadecimal, executions by
   the first thread, executions by the others. An instruction whose condition is false is counted,
   too. */
#include <inttypes.h>
#include <stdatomic.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The parts that are used of QEMU's plugin interface, version 1. Debian has no header for it. */
typedef uint64_t qemu_plugin_id_t;
typedef struct qemu_info_t qemu_info_t;
struct qemu_plugin_tb;
struct qemu_plugin_insn;
enum qemu_plugin_cb_flags { QEMU_PLUGIN_CB_NO_REGS };
typedef void (*qemu_plugin_vcpu_tb_trans_cb_t)(qemu_plugin_id_t id, struct qemu_plugin_tb* block);
typedef void (*qemu_plugin_vcpu_udata_cb_t)(unsigned int thread, void* data);
typedef void (*qemu_plugin_udata_cb_t)(qemu_plugin_id_t id, void* data);
void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id,
                                           qemu_plugin_vcpu_tb_trans_cb_t callback);
void qemu_plugin_register_vcpu_insn_exec_cb(struct qemu_plugin_insn* instruction,
                                            qemu_plugin_vcpu_udata_cb_t callback,
                                            enum qemu_plugin_cb_flags flags, void* data);
void qemu_plugin_register_atexit_cb(qemu_plugin_id_t id, qemu_plugin_udata_cb_t callback,
                                    void* data);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb* block);
struct qemu_plugin_insn* qemu_plugin_tb_get_insn(const struct qemu_plugin_tb* block, size_t index);
uint64_t qemu_plugin_insn_vaddr(const struct qemu_plugin_insn* instruction);

__attribute__((visibility("default"))) extern int qemu_plugin_version;
int qemu_plugin_version = 1;

/* Thumb instructions have 2 bytes. */
enum { kSmallestInstruction = 2, kLargestRange = 0x1000000 };

struct counter {
  atomic_uint_least64_t by_first_thread;
  atomic_uint_least64_t by_others;
};

static struct counter* counters;
static uint64_t base;
static uint64_t size;
static const char* out;

static void count(unsigned int thread, void* data) {
  struct counter* const counter = data;
  atomic_fetch_add_explicit(thread == 0 ? &counter->by_first_thread : &counter->by_others, 1,
                            memory_order_relaxed);
}

static void watch_block(qemu_plugin_id_t id, struct qemu_plugin_tb* block) {
  const size_t instructions = qemu_plugin_tb_n_insns(block);
  size_t i;
  (void)id;
  for (i = 0; i < instructions; i++) {
    struct qemu_plugin_insn* const instruction = qemu_plugin_tb_get_insn(block, i);
    const uint64_t offset = qemu_plugin_insn_vaddr(instruction) - base;
    if (offset < size) {
      qemu_plugin_register_vcpu_insn_exec_cb(instruction, count, QEMU_PLUGIN_CB_NO_REGS,
                                             &counters[offset / kSmallestInstruction]);
    }
  }
}

static void write_counts(qemu_plugin_id_t id, void* data) {
  FILE* const file = fopen(out, "w");
  uint64_t i;
  (void)id;
  (void)data;
  if (file == NULL) {
    perror(out);
    return;
  }
  for (i = 0; i < size / kSmallestInstruction; i++) {
    const uint64_t first = atomic_load(&counters[i].by_first_thread);
    const uint64_t others = atomic_load(&counters[i].by_others);
    if (first != 0 || others != 0) {
      fprintf(file, "%" PRIx64 " %" PRIu64 " %" PRIu64 "\n", i * kSmallestInstruction, first,
              others);
    }
  }
  fclose(file);
}

/* Returns the text after NAME= if the argument begins like this, else null. */
static const char* value_of(const char* argument, const char* name) {
  const size_t length = strlen(name);
  return strncmp(argument, name, length) == 0 && argument[length] == '=' ? argument + length + 1
                                                                         : NULL;
}

__attribute__((visibility("default"))) int qemu_plugin_install(qemu_plugin_id_t id,
                                                               const qemu_info_t* info, int argc,
                                                               char** argv);
int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t* info, int argc, char** argv) {
  int i;
  (void)info;
  for (i = 0; i < argc; i++) {
    const char* const base_text = value_of(argv[i], "base");
    const char* const size_text = value_of(argv[i], "size");
    const char* const out_text = value_of(argv[i], "out");
    if (base_text != NULL) base = strtoull(base_text, NULL, 0);
    if (size_text != NULL) size = strtoull(size_text, NULL, 0);
    if (out_text != NULL) out = out_text;
  }
  if (size == 0 || size > kLargestRange || out == NULL) {
    fputs("image_instructions: give base=ADDRESS,size=BYTES,out=FILE\n", stderr);
    return -1;
  }
  counters = calloc(size / kSmallestInstruction, sizeof *counters);
  if (counters == NULL) return -1;
  qemu_plugin_register_vcpu_tb_trans_cb(id, watch_block);
  qemu_plugin_register_atexit_cb(id, write_counts, NULL);
  return 0;
}

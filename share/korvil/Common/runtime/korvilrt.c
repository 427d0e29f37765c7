/* Instrumentation runtime of the gcc target packages.

   Build.pl compiles this file into a test program when its configuration
   asks for runtime analysis, with one switch per analysis:

     KRT_COVERAGE     function coverage           (gcc -finstrument-functions)
     KRT_TRACE        calls traced                (gcc -finstrument-functions)
     KRT_PERFORMANCE  time spent per function     (gcc -finstrument-functions)
     KRT_MEMORY       blocks allocated and freed  (ld --wrap=malloc,free,calloc,realloc)

   The records go to the file named by the environment variable
   ATL_OUT_FILE (the Execute driver sets it), opened for appending: every
   record is one line written by one write() call, so that the lines of the
   driver and of every thread of the program never cut each other. Without
   the variable the program runs as usual and writes nothing.

   docs/formats/runtime-output.md ("Records of the shipped runtime") gives
   the records. The runtime itself is compiled without instrumentation and
   allocates nothing through the wrapped functions. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <elf.h>
#include <errno.h>
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#ifndef KRT_COVERAGE
#define KRT_COVERAGE 0
#endif
#ifndef KRT_TRACE
#define KRT_TRACE 0
#endif
#ifndef KRT_PERFORMANCE
#define KRT_PERFORMANCE 0
#endif
#ifndef KRT_MEMORY
#define KRT_MEMORY 0
#endif

#define KRT_HOOKS (KRT_COVERAGE || KRT_TRACE || KRT_PERFORMANCE)
#define KRT_SILENT __attribute__((no_instrument_function, unused))

enum {
    RecordSize = 1024,    /* longest record, "\n" included */
    NameSize = 512,       /* longest function name written */
    FunctionSlots = 8192, /* functions followed (a power of two) */
    BlockSlots = 65536,   /* blocks followed at once (a power of two) */
    StackDepth = 512      /* calls timed per thread */
};

/* --- the output file */

static int krt_fd = -1;
static pthread_once_t krt_once = PTHREAD_ONCE_INIT;
static pthread_mutex_t krt_lock = PTHREAD_MUTEX_INITIALIZER;
static volatile int krt_ended;
static struct timespec krt_start_time;
static char krt_program[NameSize];
static __thread int krt_busy __attribute__((unused)); /* the runtime is at work on this thread */

static void krt_init(void);

/* One record: formatted, given its "\n", written at once. */
KRT_SILENT __attribute__((format(printf, 1, 2))) static void krt_record(const char *format, ...)
{
    if (krt_fd < 0)
        return;
    char line[RecordSize];
    va_list args;
    va_start(args, format);
    int size = vsnprintf(line, sizeof line - 1, format, args);
    va_end(args);
    if (size < 0)
        return;
    if (size > (int)sizeof line - 2)
        size = (int)sizeof line - 2;
    line[size++] = '\n';
    const char *at = line;
    while (size > 0) {
        const ssize_t written = write(krt_fd, at, (size_t)size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;
        at += written;
        size -= (int)written;
    }
}

/* text as a quoted field: '"' and '\' escaped, control bytes as \xHH. */
KRT_SILENT static const char *krt_quoted(const char *text, char *field, size_t size)
{
    size_t n = 0;
    field[n++] = '"';
    for (const unsigned char *p = (const unsigned char *)text; *p && n + 6 < size; ++p) {
        if (*p == '"' || *p == '\\') {
            field[n++] = '\\';
            field[n++] = (char)*p;
        } else if (*p < 0x20 || *p == 0x7f) {
            n += (size_t)snprintf(field + n, size - n, "\\x%02X", *p);
        } else {
            field[n++] = (char)*p;
        }
    }
    field[n++] = '"';
    field[n] = '\0';
    return field;
}

/* The calling thread's id, as the system numbers threads (the process id
   for the main thread): the trace records name it, so that a reader pairs
   each return with the entry of its own thread. */
KRT_SILENT __attribute__((unused)) static long krt_thread(void)
{
    static __thread long id;
    if (id == 0)
        id = (long)syscall(SYS_gettid);
    return id;
}

KRT_SILENT static uint64_t krt_now_us(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (uint64_t)(now.tv_sec - krt_start_time.tv_sec) * 1000000u +
           (uint64_t)((now.tv_nsec - krt_start_time.tv_nsec) / 1000);
}

/* --- function names, from the program's own symbol table */

struct krt_symbol {
    uintptr_t address;
    size_t size;
    const char *name;
};

static struct krt_symbol *krt_symbols; /* sorted by address; mapped memory */
static size_t krt_symbol_count;
static char *(*krt_demangle)(const char *, char *, size_t *, int *);

#if KRT_MEMORY
void *__real_malloc(size_t size);
void __real_free(void *block);
#define krt_free __real_free
#else
#define krt_free free
#endif

KRT_SILENT static int krt_by_address(const void *a, const void *b)
{
    const uintptr_t x = ((const struct krt_symbol *)a)->address;
    const uintptr_t y = ((const struct krt_symbol *)b)->address;
    return x < y ? -1 : x > y;
}

KRT_SILENT static int krt_first_object(struct dl_phdr_info *info, size_t size, void *bias)
{
    (void)size;
    *(uintptr_t *)bias = (uintptr_t)info->dlpi_addr;
    return 1; /* the program is the first object */
}

/* Reads the function symbols of /proc/self/exe; the file stays mapped, the
   names point into it. */
KRT_SILENT static void krt_load_symbols(void)
{
    const int fd = open("/proc/self/exe", O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return;
    struct stat info;
    void *image = MAP_FAILED;
    if (fstat(fd, &info) == 0 && (size_t)info.st_size >= sizeof(Elf64_Ehdr))
        image = mmap(NULL, (size_t)info.st_size, PROT_READ, MAP_PRIVATE, fd, 0);
    close(fd);
    if (image == MAP_FAILED)
        return;
    const size_t length = (size_t)info.st_size;
    const unsigned char *base = image;
    const Elf64_Ehdr *header = image;
    if (memcmp(header->e_ident, ELFMAG, SELFMAG) != 0 || header->e_ident[EI_CLASS] != ELFCLASS64 ||
        header->e_shoff == 0 || header->e_shoff + (size_t)header->e_shnum * sizeof(Elf64_Shdr) > length)
        return;
    const Elf64_Shdr *sections = (const Elf64_Shdr *)(base + header->e_shoff);
    const Elf64_Shdr *table = NULL;
    for (int i = 0; i < header->e_shnum; ++i) {
        if (sections[i].sh_type == SHT_SYMTAB)
            table = &sections[i];
    }
    for (int i = 0; !table && i < header->e_shnum; ++i) {
        if (sections[i].sh_type == SHT_DYNSYM)
            table = &sections[i];
    }
    if (!table || table->sh_link >= header->e_shnum || table->sh_offset + table->sh_size > length)
        return;
    const Elf64_Shdr *strings = &sections[table->sh_link];
    if (strings->sh_offset + strings->sh_size > length)
        return;
    const Elf64_Sym *symbols = (const Elf64_Sym *)(base + table->sh_offset);
    const size_t count = table->sh_size / sizeof(Elf64_Sym);
    size_t functions = 0;
    for (size_t i = 0; i < count; ++i) {
        if (ELF64_ST_TYPE(symbols[i].st_info) == STT_FUNC && symbols[i].st_value != 0 &&
            symbols[i].st_name < strings->sh_size)
            ++functions;
    }
    if (functions == 0)
        return;
    void *list = mmap(NULL, functions * sizeof(struct krt_symbol), PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (list == MAP_FAILED)
        return;
    uintptr_t bias = 0;
    dl_iterate_phdr(krt_first_object, &bias);
    krt_symbols = list;
    const char *names = (const char *)(base + strings->sh_offset);
    for (size_t i = 0; i < count; ++i) {
        const Elf64_Sym *s = &symbols[i];
        if (ELF64_ST_TYPE(s->st_info) != STT_FUNC || s->st_value == 0 || s->st_name >= strings->sh_size)
            continue;
        krt_symbols[krt_symbol_count++] =
            (struct krt_symbol){bias + s->st_value, s->st_size, names + s->st_name};
    }
    qsort(krt_symbols, krt_symbol_count, sizeof *krt_symbols, krt_by_address);
}

/* The symbol whose code holds address; NULL when none. */
KRT_SILENT static const struct krt_symbol *krt_symbol_at(uintptr_t address)
{
    size_t low = 0, high = krt_symbol_count;
    while (low < high) {
        const size_t middle = (low + high) / 2;
        if (krt_symbols[middle].address <= address)
            low = middle + 1;
        else
            high = middle;
    }
    if (low == 0)
        return NULL;
    const struct krt_symbol *s = &krt_symbols[low - 1];
    return (address < s->address + (s->size ? s->size : 1)) ? s : NULL;
}

/* The readable name of the function holding address, into name: the
   symbol table's, else the dynamic linker's, else the address. */
KRT_SILENT static void krt_name_of(uintptr_t address, char *name, size_t size)
{
    const struct krt_symbol *s = krt_symbol_at(address);
    const char *symbol = s ? s->name : NULL;
    Dl_info info;
    if (!symbol && dladdr((void *)address, &info) && info.dli_sname)
        symbol = info.dli_sname;
    if (!symbol) {
        snprintf(name, size, "0x%lx", (unsigned long)address);
        return;
    }
    if (krt_demangle && symbol[0] == '_' && symbol[1] == 'Z') {
        int status = -1;
        char *plain = krt_demangle(symbol, NULL, NULL, &status);
        if (plain && status == 0) {
            snprintf(name, size, "%s", plain);
            krt_free(plain);
            return;
        }
        krt_free(plain);
    }
    snprintf(name, size, "%s", symbol);
}

/* The start of the function holding address (itself when unknown): the
   key of a function's record, as the entry hook gives it. */
KRT_SILENT static uintptr_t krt_function_start(uintptr_t address)
{
    const struct krt_symbol *s = krt_symbol_at(address);
    return s ? s->address : address;
}

/* --- functions followed: an open-addressing table keyed by address */

struct krt_function {
    uintptr_t address; /* 0: free slot */
    char name[NameSize];
    uint64_t calls;
    uint64_t total_us; /* time inside the function, callees included */
    uint64_t self_us;  /* callees excluded */
    uint64_t max_us;
};

static struct krt_function krt_functions[FunctionSlots];
static size_t krt_function_count;

/* The function of address, made at first use (its name resolved then);
   NULL when the table is full. Called with the lock held. */
KRT_SILENT static struct krt_function *krt_function_of(uintptr_t address, int *first)
{
    size_t slot = (address >> 4) & (FunctionSlots - 1);
    for (size_t probe = 0; probe < FunctionSlots; ++probe, slot = (slot + 1) & (FunctionSlots - 1)) {
        struct krt_function *f = &krt_functions[slot];
        if (f->address == address) {
            *first = 0;
            return f;
        }
        if (f->address == 0) {
            if (krt_function_count + 1 >= FunctionSlots)
                return NULL;
            ++krt_function_count;
            f->address = address;
            krt_name_of(address, f->name, sizeof f->name);
            *first = 1;
            return f;
        }
    }
    return NULL;
}

/* --- calls: function entry and exit hooks */

#if KRT_HOOKS
struct krt_frame {
    struct krt_function *function;
    uint64_t start_us;
    uint64_t callees_us;
};

static __thread struct krt_frame krt_stack[StackDepth];
static __thread int krt_depth;
static uint64_t krt_entries, krt_returns;

KRT_SILENT void __cyg_profile_func_enter(void *function, void *call_site)
{
    (void)call_site;
    if (krt_busy || krt_ended)
        return;
    krt_busy = 1;
    pthread_once(&krt_once, krt_init);
    const uint64_t now = krt_now_us();
    char field[NameSize + 16];
    int first = 0;
    pthread_mutex_lock(&krt_lock);
    struct krt_function *f = krt_function_of((uintptr_t)function, &first);
    ++krt_entries;
    if (f)
        ++f->calls;
    const char *name = f ? krt_quoted(f->name, field, sizeof field) : "\"?\"";
    (void)name;
    (void)now;
#if KRT_COVERAGE
    if (f && first)
        krt_record("FT %s 0x%lx", name, (unsigned long)f->address);
#endif
#if KRT_TRACE
    krt_record("ME %d %s %llu %ld", krt_depth, name, (unsigned long long)now, krt_thread());
#endif
    pthread_mutex_unlock(&krt_lock);
    if (krt_depth < StackDepth)
        krt_stack[krt_depth] = (struct krt_frame){f, now, 0};
    ++krt_depth;
    krt_busy = 0;
}

KRT_SILENT void __cyg_profile_func_exit(void *function, void *call_site)
{
    (void)function;
    (void)call_site;
    if (krt_busy || krt_ended || krt_depth == 0)
        return;
    krt_busy = 1;
    const uint64_t now = krt_now_us();
    --krt_depth;
    struct krt_frame frame = {NULL, now, 0};
    if (krt_depth < StackDepth)
        frame = krt_stack[krt_depth];
    const uint64_t elapsed = now - frame.start_us;
    if (krt_depth > 0 && krt_depth <= StackDepth)
        krt_stack[krt_depth - 1].callees_us += elapsed;
    char field[NameSize + 16];
    pthread_mutex_lock(&krt_lock);
    ++krt_returns;
    struct krt_function *f = frame.function;
    if (f) {
        f->total_us += elapsed;
        f->self_us += elapsed > frame.callees_us ? elapsed - frame.callees_us : 0;
        if (elapsed > f->max_us)
            f->max_us = elapsed;
    }
#if KRT_TRACE
    krt_record("MR %d %s %llu %ld", krt_depth, f ? krt_quoted(f->name, field, sizeof field) : "\"?\"",
               (unsigned long long)now, krt_thread());
#else
    (void)field;
#endif
    pthread_mutex_unlock(&krt_lock);
    krt_busy = 0;
}
#endif

/* --- memory: the wrapped allocation functions */

#if KRT_MEMORY
struct krt_block {
    uintptr_t address; /* 0: free slot */
    size_t size;
    struct krt_function *owner; /* the function that allocated it */
};

static struct krt_block krt_blocks[BlockSlots];
static size_t krt_block_count;
static uint64_t krt_allocations, krt_frees, krt_bytes, krt_live_bytes, krt_peak_bytes;

void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);

KRT_SILENT static size_t krt_block_slot(uintptr_t address)
{
    return (address >> 4) & (BlockSlots - 1);
}

/* Called with the lock held, as the two below. */
KRT_SILENT static void krt_block_add(uintptr_t address, size_t size, struct krt_function *owner)
{
    ++krt_allocations;
    krt_bytes += size;
    krt_live_bytes += size;
    if (krt_live_bytes > krt_peak_bytes)
        krt_peak_bytes = krt_live_bytes;
    if (krt_block_count + 1 >= BlockSlots)
        return;
    size_t slot = krt_block_slot(address);
    while (krt_blocks[slot].address != 0)
        slot = (slot + 1) & (BlockSlots - 1);
    krt_blocks[slot] = (struct krt_block){address, size, owner};
    ++krt_block_count;
}

/* Removes the block of address (backward-shift deletion); its record, or
   a zero one when the block is not followed. */
KRT_SILENT static struct krt_block krt_block_remove(uintptr_t address)
{
    struct krt_block found = {0, 0, NULL};
    size_t slot = krt_block_slot(address);
    while (krt_blocks[slot].address != 0 && krt_blocks[slot].address != address)
        slot = (slot + 1) & (BlockSlots - 1);
    if (krt_blocks[slot].address == 0)
        return found;
    found = krt_blocks[slot];
    --krt_block_count;
    krt_live_bytes -= found.size;
    size_t hole = slot;
    for (size_t next = (hole + 1) & (BlockSlots - 1); krt_blocks[next].address != 0;
         next = (next + 1) & (BlockSlots - 1)) {
        const size_t home = krt_block_slot(krt_blocks[next].address);
        /* Moves next into the hole unless its home lies between the two. */
        const int stays = hole <= next ? (home > hole && home <= next) : (home > hole || home <= next);
        if (!stays) {
            krt_blocks[hole] = krt_blocks[next];
            hole = next;
        }
    }
    krt_blocks[hole].address = 0;
    return found;
}

/* Sets the runtime up once, takes the lock and gives the function that
   holds caller (a return address), for a memory record. */
KRT_SILENT static struct krt_function *krt_locked_caller(void *caller)
{
    pthread_once(&krt_once, krt_init);
    int first = 0;
    pthread_mutex_lock(&krt_lock);
    return krt_function_of(krt_function_start((uintptr_t)caller), &first);
}

KRT_SILENT static void krt_allocated(void *block, size_t size, void *caller)
{
    if (!block || krt_busy || krt_ended)
        return;
    krt_busy = 1;
    char field[NameSize + 16];
    struct krt_function *owner = krt_locked_caller(caller);
    krt_block_add((uintptr_t)block, size, owner);
    krt_record("PB %zu 0x%lx %s", size, (unsigned long)(uintptr_t)block,
               owner ? krt_quoted(owner->name, field, sizeof field) : "\"?\"");
    pthread_mutex_unlock(&krt_lock);
    krt_busy = 0;
}

KRT_SILENT static void krt_freed(void *block, void *caller)
{
    if (!block || krt_busy || krt_ended)
        return;
    krt_busy = 1;
    char field[NameSize + 16];
    struct krt_function *by = krt_locked_caller(caller);
    const char *name = by ? krt_quoted(by->name, field, sizeof field) : "\"?\"";
    const struct krt_block found = krt_block_remove((uintptr_t)block);
    ++krt_frees;
    if (found.address)
        krt_record("PF 0x%lx %zu %s", (unsigned long)found.address, found.size, name);
    else
        krt_record("PX 0x%lx %s", (unsigned long)(uintptr_t)block, name);
    pthread_mutex_unlock(&krt_lock);
    krt_busy = 0;
}

KRT_SILENT void *__wrap_malloc(size_t size)
{
    void *block = __real_malloc(size);
    krt_allocated(block, size, __builtin_return_address(0));
    return block;
}

KRT_SILENT void *__wrap_calloc(size_t count, size_t size)
{
    void *block = __real_calloc(count, size);
    krt_allocated(block, count * size, __builtin_return_address(0));
    return block;
}

KRT_SILENT void *__wrap_realloc(void *old, size_t size)
{
    void *caller = __builtin_return_address(0);
    void *block = __real_realloc(old, size);
    if (block || size == 0)
        krt_freed(old, caller);
    krt_allocated(block, size, caller);
    return block;
}

KRT_SILENT void __wrap_free(void *block)
{
    krt_freed(block, __builtin_return_address(0));
    __real_free(block);
}
#endif

/* --- start and end of the run */

KRT_SILENT static void krt_init(void)
{
    clock_gettime(CLOCK_MONOTONIC, &krt_start_time);
    const char *file = getenv("ATL_OUT_FILE");
    if (!file || !*file)
        return;
    krt_fd = open(file, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (krt_fd < 0) {
        fprintf(stderr, "%s: cannot write the runtime output: %s\n", file, strerror(errno));
        return;
    }
    const ssize_t length = readlink("/proc/self/exe", krt_program, sizeof krt_program - 1);
    krt_program[length > 0 ? length : 0] = '\0';
    krt_demangle = (char *(*)(const char *, char *, size_t *, int *))dlsym(RTLD_DEFAULT, "__cxa_demangle");
    krt_load_symbols();
    char program[NameSize + 16];
    krt_quoted(krt_program, program, sizeof program);
    const long pid = (long)getpid();
    (void)pid;
#if KRT_COVERAGE
    krt_record("NT %s %ld", program, pid);
    krt_record("DT \"0\"");
#endif
#if KRT_TRACE
    krt_record("TS %s %ld", program, pid);
#endif
#if KRT_MEMORY
    krt_record("PU %s %ld", program, pid);
    krt_record("PT \"\"");
#endif
#if KRT_PERFORMANCE
    krt_record("QU %s %ld", program, pid);
    krt_record("QD \"0\"");
#endif
}

KRT_SILENT __attribute__((constructor)) static void krt_start(void)
{
    pthread_once(&krt_once, krt_init);
}

/* The summaries, once the program has ended (exit or return from main). */
KRT_SILENT __attribute__((destructor)) static void krt_end(void)
{
    pthread_once(&krt_once, krt_init);
    pthread_mutex_lock(&krt_lock);
    krt_ended = 1;
    char field[NameSize + 16];
    (void)field;
#if KRT_HOOKS
    size_t reached = 0;
    for (size_t i = 0; i < FunctionSlots; ++i) {
        const struct krt_function *f = &krt_functions[i];
        if (!f->address || !f->calls)
            continue;
        ++reached;
#if KRT_COVERAGE
        krt_record("CO %s %llu", krt_quoted(f->name, field, sizeof field), (unsigned long long)f->calls);
#endif
#if KRT_PERFORMANCE
        krt_record("QF %s %llu %llu %llu %llu", krt_quoted(f->name, field, sizeof field),
                   (unsigned long long)f->calls, (unsigned long long)f->total_us,
                   (unsigned long long)f->self_us, (unsigned long long)f->max_us);
#endif
    }
    (void)reached;
#if KRT_COVERAGE
    krt_record("TE %zu", reached);
#endif
#if KRT_TRACE
    krt_record("TM %llu %llu", (unsigned long long)krt_entries, (unsigned long long)krt_returns);
#endif
#if KRT_PERFORMANCE
    krt_record("QT %llu", (unsigned long long)krt_now_us());
#endif
#endif
#if KRT_MEMORY
    uint64_t leaked = 0;
    for (size_t i = 0; i < BlockSlots; ++i) {
        const struct krt_block *b = &krt_blocks[i];
        if (!b->address)
            continue;
        leaked += b->size;
        krt_record("PO %zu 0x%lx %s", b->size, (unsigned long)b->address,
                   b->owner ? krt_quoted(b->owner->name, field, sizeof field) : "\"?\"");
    }
    krt_record("PS %llu %llu %llu %llu %zu %llu", (unsigned long long)krt_allocations,
               (unsigned long long)krt_frees, (unsigned long long)krt_bytes,
               (unsigned long long)krt_peak_bytes, krt_block_count, (unsigned long long)leaked);
#endif
    pthread_mutex_unlock(&krt_lock);
    if (krt_fd >= 0)
        close(krt_fd);
    krt_fd = -1;
}

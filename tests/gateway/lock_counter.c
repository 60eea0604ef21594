// SPDX-License-Identifier: MIT
//
// Preloaded into the gateways' tests, counts the locks that the library takes and the threads that
// it starts. At the end it says so on standard error.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <pthread.h>
#include <stdatomic.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

static pid_t process;
static atomic_long all_locks;
static atomic_long own_locks;
static atomic_long own_threads;

static int is_own(const void* caller) {
  Dl_info place;
  return dladdr(caller, &place) != 0 && place.dli_fname != NULL &&
         strstr(place.dli_fname, "libkraddon_packaging") != NULL;
}

static void count_lock(const void* caller) {
  ++all_locks;
  if (is_own(caller)) ++own_locks;
}

int pthread_mutex_lock(pthread_mutex_t* mutex) {
  static int (*next)(pthread_mutex_t*);
  if (next == NULL) *(void**)&next = dlsym(RTLD_NEXT, "pthread_mutex_lock");
  count_lock(__builtin_return_address(0));
  return next(mutex);
}

int pthread_mutex_trylock(pthread_mutex_t* mutex) {
  static int (*next)(pthread_mutex_t*);
  if (next == NULL) *(void**)&next = dlsym(RTLD_NEXT, "pthread_mutex_trylock");
  count_lock(__builtin_return_address(0));
  return next(mutex);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) {
  static int (*next)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  if (next == NULL) *(void**)&next = dlsym(RTLD_NEXT, "pthread_create");
  if (is_own(__builtin_return_address(0))) ++own_threads;
  return next(thread, attributes, start, argument);
}

__attribute__((constructor)) static void begin(void) {
  process = getpid();
}

// Not for what the tests start.
__attribute__((destructor)) static void report(void) {
  if (getpid() != process) return;
  if (dlopen("libkraddon_packaging.so", RTLD_LAZY | RTLD_NOLOAD) == NULL) return;
  fprintf(stderr, "of %ld locks the library took %ld, and it started %ld threads\n", all_locks,
          own_locks, own_threads);
}

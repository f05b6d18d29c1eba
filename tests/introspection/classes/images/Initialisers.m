// An image that calls the program back while it is being loaded, and leaves the text of a failed look-up to the loader.
// If TAVLEN_IMAGE_FAULT is set, it does what a program must not trust an image not to do.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#import <objc/Object.h>

static void callBack(const char *initialiser) {
  void (*callback)(const char *) = (void (*)(const char *))dlsym(RTLD_DEFAULT, "tavlenSampleCallback");
  if (callback) callback(initialiser);
}

@interface SampleLoaded : Object
@end
@implementation SampleLoaded
+ (void)load { callBack("load"); }
@end

// Two processes that only SIGKILL ends, and that hold the pipe `alive` open as long as they live.
static void hang(const char *alive) {
  signal(SIGINT, SIG_IGN);
  signal(SIGTERM, SIG_IGN);
  const int pipe = open(alive, O_WRONLY);
  if (fork() == 0 && write(pipe, "", 1) != 1) _exit(1);
  for (;;) pause();
}

// Answers in the program's place, by whichever socket it has.
static void answer(void) {
  int socket;
  for (socket = 3; socket < 64; ++socket) {
    send(socket, "c\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 9, 0);
  }
  pause();
}

__attribute__((constructor)) static void construct(void) {
  const char *fault = getenv("TAVLEN_IMAGE_FAULT");
  if (fault && strcmp(fault, "exit") == 0) exit(0);
  if (fault && strcmp(fault, "print") == 0) {
    puts("printed");
    fflush(stdout);
    fprintf(stderr, "input: %d\n", getchar());
  }
  if (fault && strcmp(fault, "answer") == 0) answer();
  if (fault && *fault == '/') hang(fault);
  callBack("constructor");
  dlsym(RTLD_DEFAULT, "tavlenNoSuchName");
}

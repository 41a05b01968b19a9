/*
 * Shows a picture on the iPod's screen. IpodConnect itself sends the file logo_zel.bmp of the
 * current directory; this checks the picture, puts it there, and connects.
 *
 *     show_logo [FILE.bmp]        without FILE: the logo_zel.bmp that is there
 *
 * It ends within 30 s, and one second more for each row of the iPod's screen, whatever the iPod
 * does: an iPod that falls silent costs the time of each row.
 */
#include <string.h>

#include "ipodctl.h"
#include "platform.h"

#define LOGO "logo_zel.bmp"

enum { HEADER_BYTES = 54, SHOWN_MS = 3000 };

static unsigned long number_at(const unsigned char* bytes) {
  return bytes[0] | (unsigned long)bytes[1] << 8 | (unsigned long)bytes[2] << 16 |
         (unsigned long)bytes[3] << 24;
}

/* Returns what is wrong with a bitmap and how to mend it; null when the library can read it. */
static const char* fault_of(const unsigned char* header, size_t size, unsigned long fileSize) {
  unsigned long width;
  unsigned long height;
  if (size < HEADER_BYTES || memcmp(header, "BM", 2) != 0) return "save the picture as a BMP file";
  if (header[26] != 1 || header[28] != 24) return "save the BMP file with 24 bits for each pixel";
  if (number_at(header + 30) != 0) return "save the BMP file without compression";
  width = number_at(header + 18);
  height = number_at(header + 22);
  if (width % 4 != 0) return "make the picture's width a multiple of 4";
  /* A larger picture fits on no iPod; a height below 0 means that the top row is first. */
  if (width - 1 >= 1024 || height - 1 >= 1024) return "save it bottom row first, at most 1024x1024";
  if (fileSize < number_at(header + 10) + 3 * width * height) return "the file is cut short";
  return NULL;
}

static const char* check(FILE* file) {
  unsigned char header[HEADER_BYTES] = {0};
  const size_t size = fread(header, 1, sizeof header, file);
  long fileSize;
  if (fseek(file, 0, SEEK_END) != 0) return "give a file";
  fileSize = ftell(file);
  rewind(file);
  return fault_of(header, size, fileSize > 0 ? (unsigned long)fileSize : 0);
}

/* Returns 0 when the copy is not complete. */
static int copy_to_logo(FILE* from) {
  char bytes[4096];
  size_t size;
  int isWritten = 1;
  FILE* const to = fopen(LOGO, "wb");
  if (to == NULL) return 0;
  while ((size = fread(bytes, 1, sizeof bytes, from)) > 0)
    if (fwrite(bytes, 1, size, to) != size) isWritten = 0;
  return fclose(to) == 0 && isWritten && !ferror(from);
}

static int refuse(const char* file, const char* advice) {
  fprintf(stderr, "show_logo: %s: %s\n", file, advice);
  return 2;
}

static int exists(const char* name) {
  FILE* const file = fopen(name, "rb");
  if (file != NULL) fclose(file);
  return file != NULL;
}

/* Tries twice: one disturbed message can make an attempt fail. */
static int connect_ipod(void) {
  if (IpodConnect()) return 1;
  wait_ms(1000);
  return IpodConnect();
}

/* Asks twice, because an answer may get lost. */
static int is_there(void) {
  if (IpodGetTrackIndex(NULL)) return 1;
  wait_ms(1000);
  return IpodGetTrackIndex(NULL);
}

/* The library does not report whether the iPod shows the picture: an iPod with a smaller screen, or
 * one in shades of grey, is connected without it. While it is connected, its buttons are locked. */
static int show(void) {
  int isThere;
  if (!connect_ipod()) {
    puts("No iPod could be connected. Check the cable, then start again.");
    return 1;
  }
  puts("The iPod shows the logo, if its screen is large enough and has colours.");
  wait_ms(SHOWN_MS);
  isThere = is_there();
  IpodDisconnect(); /* another logo also needs a new connection */
  puts(isThere ? "The iPod shows its menus again."
               : "The iPod gives no usable answer. Plug it in again, then start again.");
  return isThere ? 0 : 1;
}

int main(int argc, char** argv) {
  const char* const name = argc > 1 ? argv[1] : LOGO;
  const int isCopied = strcmp(name, LOGO) != 0;
  const char* advice;
  FILE* file;
  int status;
  if (argc > 2) return refuse(argv[2], "give one bitmap");
  file = fopen(name, "rb");
  if (file == NULL) return refuse(name, "cannot be opened; give a bitmap that can be read");
  advice = check(file);
  if (advice == NULL && isCopied && exists(LOGO))
    advice = "start in a folder without " LOGO ", whose place this file takes";
  if (advice == NULL && isCopied && !copy_to_logo(file)) {
    remove(LOGO);
    advice = "cannot be copied to " LOGO "; start in a folder that can be written";
  }
  fclose(file);
  if (advice != NULL) return refuse(name, advice);
  status = show();
  if (isCopied) remove(LOGO);
  return status;
}

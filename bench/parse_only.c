/* The smallest program that reads and parses a recording with libplist, to compare costs with. */
#include <plist/plist.h>
#include <stdio.h>
#include <stdlib.h>

int main(int argc, char** argv) {
  FILE* file = argc == 2 ? fopen(argv[1], "rb") : NULL;
  if (file == NULL || fseek(file, 0, SEEK_END) != 0) return 2;
  const long size = ftell(file);
  char* text = malloc((size_t)size);
  rewind(file);
  if (text == NULL || fread(text, 1, (size_t)size, file) != (size_t)size) return 2;
  fclose(file);

  plist_t root = NULL;
  plist_from_xml(text, (uint32_t)size, &root);
  free(text);
  if (root == NULL) return 1;
  plist_free(root);
  return 0;
}

/* The least work a 5th-order coding chain needs: read the coding training file (a header line,
 * then one gene per line) and count the 6-letter words of each line in the three codon positions
 * with a rolling index, skipping words that hold a letter other than A, C, G, T. Prints only a
 * checksum, so that the counting cannot be optimised away.
 *
 *   kmer_floor cod.txt
 */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

enum { WORD = 6, TABLE = 1 << (2 * WORD) };

static uint64_t counts[3][TABLE];

static char* read_all(const char* name, size_t* size) {
  FILE* file = fopen(name, "rb");
  if (!file) return NULL;
  fseek(file, 0, SEEK_END);
  long length = ftell(file);
  fseek(file, 0, SEEK_SET);
  char* text = malloc((size_t)length + 1);
  if (text && fread(text, 1, (size_t)length, file) != (size_t)length) {
    free(text);
    text = NULL;
  }
  fclose(file);
  *size = (size_t)length;
  return text;
}

int main(int argc, char** argv) {
  size_t size = 0;
  char* text = argc == 2 ? read_all(argv[1], &size) : NULL;
  if (!text) {
    fprintf(stderr, "usage: kmer_floor FILE (readable)\n");
    return 1;
  }
  signed char code[256];
  for (int c = 0; c < 256; ++c) code[c] = -1;
  code['A'] = 0, code['C'] = 1, code['G'] = 2, code['T'] = 3;
  size_t i = 0;
  /* A first line starting with '>' is the header. */
  if (size > 0 && text[0] == '>')
    while (i < size && text[i++] != '\n') {
    }
  unsigned word = 0, valid = 0, frame = 0;
  for (; i < size; ++i) {
    unsigned char c = (unsigned char)text[i];
    if (c == '\n') {
      word = valid = frame = 0;
      continue;
    }
    int k = code[c];
    if (k < 0) {
      valid = 0;
    } else {
      word = ((word << 2) | (unsigned)k) & (TABLE - 1);
      if (++valid >= WORD) ++counts[frame][word];
    }
    frame = frame == 2 ? 0 : frame + 1;
  }
  uint64_t sum = 0;
  for (int f = 0; f < 3; ++f)
    for (unsigned w = 0; w < TABLE; ++w) sum = sum * 31 + counts[f][w];
  printf("%llu\n", (unsigned long long)sum);
  free(text);
  return 0;
}

#include <stdio.h>

#include "ipodctl.h"

int main(void) {
  unsigned short name[64] = {0};
  int i;
  if (!IpodConnect()) return 1;
  IpodGetFirstItem(0, IPOD_ARTISTS, 0); /* the artists; the cursor stands on "play all" */
  IpodGetNextItem();                    /* the first 35 artists, or the first one of a few */
  IpodDisableTabVisualizationActive();  /* now surely the first artist */
  IpodGetItemName(0, name, NULL, 63);   /* its name */
  IpodGetFirstItem(1, IPOD_TRACKS, 1);  /* all of its tracks */
  IpodSongPlay(0);                      /* play them from the first */
  for (i = 0; name[i] != 0; i++)
    putchar(name[i]);
  puts(" plays");
  return IpodDisconnect();
}

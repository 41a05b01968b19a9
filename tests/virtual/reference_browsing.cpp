#include "virtual/reference_browsing.h"

#include <ipodctl.h>

namespace virtual_session {
namespace {

void lookAtTheEntry(Host& host) {
  host.call("IpodIsPlayAll", IpodIsPlayAll);
  host.entryName("IpodGetItemName", IpodGetItemName);
}

/// Moves to the next entry and back.
void moveAbout(Host& host) {
  host.move("IpodGetNextItem", IpodGetNextItem);
  lookAtTheEntry(host);
  host.move("IpodGetPrevItem", IpodGetPrevItem);
}

void goUp(Host& host) { host.move("IpodGetParentItem", IpodGetParentItem); }

void readTabs(Host& host) {
  host.call("IpodIsTabActive", IpodIsTabActive);
  host.call("IpodIsTabVisualizationActive", IpodIsTabVisualizationActive);
}

void chooseTab(Host& host) {
  host.call("IpodDisableTabVisualizationActive", IpodDisableTabVisualizationActive);
}

void remember(Host& host) { host.call("IpodValidateUpDownTree", IpodValidateUpDownTree); }

void readParentName(Host& host) {
  host.entryName("IpodGetParentUpDownName", IpodGetParentUpDownName);
}

/// Plays the first one, and steps to the next one and back. The third one is empty.
void browsePlaylists(Host& host) {
  host.open(0, IPOD_PLAYLISTS);
  host.number("IpodGetMediaFileCount", IpodGetMediaFileCount);
  moveAbout(host);
  host.call("IpodCurItemIsEmpty", IpodCurItemIsEmpty);
  host.move("IpodGetPrevItem", IpodGetPrevItem);
  host.call("IpodCurItemIsEmpty", IpodCurItemIsEmpty);
  host.move("IpodGetNextItem", IpodGetNextItem);
  host.open(1, IPOD_TRACKS);
  host.call("IpodIsTrack", IpodIsTrack);
  host.call("IpodGetType", IpodGetType);
  host.number("IpodSongGetNumElem", IpodSongGetNumElem);
  remember(host);
  host.play(1);
  readParentName(host);
  goUp(host);
  host.command(IPOD_NEXT_GROUP);
  host.command(IPOD_PREVIOUS_GROUP);
  host.call("IpodGetNumberOfPlaylist", IpodGetNumberOfPlaylist);
}

/// Moves among tabs, among the items of one, down to the tracks of an album and up again.
void browseArtists(Host& host) {
  host.open(0, IPOD_ARTISTS);
  readTabs(host);
  lookAtTheEntry(host);
  host.move("IpodGetNextItem", IpodGetNextItem);
  moveAbout(host);
  lookAtTheEntry(host);
  chooseTab(host);
  readTabs(host);
  moveAbout(host);
  goUp(host);  // to the tabs
  chooseTab(host);
  host.call("IpodEnableTabVisualizationActive", IpodEnableTabVisualizationActive);
  readTabs(host);
  chooseTab(host);
  host.open(1, IPOD_ALBUMS);
  moveAbout(host);
  host.move("IpodGetNextItem", IpodGetNextItem);
  host.open(1, IPOD_TRACKS);
  moveAbout(host);
  remember(host);
  host.play(-1);
  readParentName(host);
  goUp(host);
  goUp(host);
  host.command(IPOD_NEXT_GROUP);
}

/// The snapshot is the list of artists itself; the steps begin at the fourth of all tracks.
void stepAmongArtists(Host& host) {
  host.open(0, IPOD_ARTISTS);
  remember(host);
  host.play(3);
  host.command(IPOD_NEXT_GROUP);
  host.number("IpodGetTrackIndex", IpodGetTrackIndex);
  host.command(IPOD_PREVIOUS_GROUP);
  host.number("IpodGetTrackIndex", IpodGetTrackIndex);
}

/// Moves among all tracks of the long album, in tabs.
void browseAlbums(Host& host) {
  host.open(0, IPOD_ALBUMS);
  moveAbout(host);
  host.move("IpodGetPrevItem", IpodGetPrevItem);
  host.open(1, IPOD_TRACKS, 1);
  readTabs(host);
  host.move("IpodGetNextItem", IpodGetNextItem);
  moveAbout(host);
  chooseTab(host);
  moveAbout(host);
}

void browseTheOthers(Host& host) {
  host.open(0, IPOD_GENRES);
  moveAbout(host);
  host.call("IpodCurItemIsEmpty", IpodCurItemIsEmpty);
  host.open(1, IPOD_ARTISTS);
  host.number("IpodGetMediaFileCount", IpodGetMediaFileCount);
  for (const int type : {IPOD_TYPE_6, IPOD_TYPE_7, IPOD_TYPE_8}) {
    host.open(0, type);
    lookAtTheEntry(host);
  }
  host.open(0, IPOD_TRACKS);
  moveAbout(host);
}

}  // namespace

void browseEverything(Host& host) {
  browsePlaylists(host);
  browseArtists(host);
  stepAmongArtists(host);
  browseAlbums(host);
  browseTheOthers(host);
}

}  // namespace virtual_session

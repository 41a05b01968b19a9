#pragma once

#include <dlfcn.h>
#include <ipodctl.h>

#include <stdexcept>

namespace session {

/// The library as a program loads it at run time: fresh at each load. Unloads it at the end.
class LoadedLibrary {
 public:
  LoadedLibrary();
  ~LoadedLibrary();
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  /// Whether it is loaded by anybody.
  static bool isLoaded();

 private:
  void* const library;

  template <class Function>
  Function* find(const char* name) const {
    void* const symbol = dlsym(library, name);
    if (symbol == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<Function*>(symbol);
  }

 public:
#define IPODCTL_EXPORT(name) decltype(::name)* const name = find<decltype(::name)>(#name)
  IPODCTL_EXPORT(IpodConnect);
  IPODCTL_EXPORT(IpodDisconnect);
  IPODCTL_EXPORT(IpodIsConnect);
  IPODCTL_EXPORT(isIpodAudioPresent);
  IPODCTL_EXPORT(IpodSetSameIpod);
  IPODCTL_EXPORT(IpodValidateUpDownTree);
  IPODCTL_EXPORT(IpodCommand);
  IPODCTL_EXPORT(IpodSongPlay);
  IPODCTL_EXPORT(IpodSongGetNumElem);
  IPODCTL_EXPORT(IpodGetTrackIndex);
  IPODCTL_EXPORT(IpodSetShuffleMode);
  IPODCTL_EXPORT(IpodGetShuffleMode);
  IPODCTL_EXPORT(IpodSetRepeatMode);
  IPODCTL_EXPORT(IpodGetRepeatMode);
  IPODCTL_EXPORT(IpodGetCurrentPlayStatus);
  IPODCTL_EXPORT(IpodGetCurrentTrackPosition);
  IPODCTL_EXPORT(IpodGetFirstItem);
  IPODCTL_EXPORT(IpodGetNextItem);
  IPODCTL_EXPORT(IpodGetPrevItem);
  IPODCTL_EXPORT(IpodGetParentItem);
  IPODCTL_EXPORT(IpodCurItemIsEmpty);
  IPODCTL_EXPORT(IpodIsPlayAll);
  IPODCTL_EXPORT(IpodIsTrack);
  IPODCTL_EXPORT(IpodGetType);
  IPODCTL_EXPORT(IpodIsTabActive);
  IPODCTL_EXPORT(IpodIsTabVisualizationActive);
  IPODCTL_EXPORT(IpodDisableTabVisualizationActive);
  IPODCTL_EXPORT(IpodEnableTabVisualizationActive);
  IPODCTL_EXPORT(IpodGetMediaFileCount);
  IPODCTL_EXPORT(IpodGetNumberOfPlaylist);
  IPODCTL_EXPORT(IpodGetItemName);
  IPODCTL_EXPORT(IpodGetParentUpDownName);
  IPODCTL_EXPORT(IpodGetTrackInfo);
  IPODCTL_EXPORT(IpodGetName);
  IPODCTL_EXPORT(IpodGetSerialNumber);
#undef IPODCTL_EXPORT
};

}  // namespace session

/* A minimal host: loads the plug-in, sets up the cameras, takes one image
 * from the first camera into a grey plane and tears down.
 *
 *   grab_one [path/to/libtavro.so]
 *
 * Without an argument it opens the plug-in of the installation it was built
 * against (TAVRO_PLUGIN, given by the build). */
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#include "tavro/tavro_host.h"

#ifndef TAVRO_PLUGIN
#define TAVRO_PLUGIN "libtavro.so"
#endif

static int32_t OnFinished(CamImage* image, uint32_t userValue) {
  printf("image %p finished, user value %u\n", (void*)image, userValue);
  return 0; /* ignored */
}

int main(int argc, char** argv) {
  const char* path = argc > 1 ? argv[1] : TAVRO_PLUGIN;
  void* lib = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (lib == NULL) {
    fprintf(stderr, "cannot load the plug-in: %s\n", dlerror());
    return 1;
  }
  PFN_kxTavroSetup setup = (PFN_kxTavroSetup)dlsym(lib, "kxTavroSetup");
  PFN_kxTavroAcquire acquire = (PFN_kxTavroAcquire)dlsym(lib, "kxTavroAcquire");
  PFN_kxTavroTearDown tearDown = (PFN_kxTavroTearDown)dlsym(lib, "kxTavroTearDown");
  if (setup == NULL || acquire == NULL || tearDown == NULL) {
    fprintf(stderr, "%s is not the Tavro plug-in\n", path);
    return 1;
  }

  SystemRecord* sys = calloc(1, sizeof *sys); /* zeroed: pszCamSelection is NULL */
  int widthMax = 0, heightMax = 0;
  if (sys == NULL || setup(0, NULL, &widthMax, &heightMax, sys) != 0 || sys->iNumCams < 1) {
    fprintf(stderr, "no camera\n");
    return 1;
  }
  sys->pfnAcqFinished = OnFinished;

  CameraInfo camera = {0};
  camera.iCamId = 0; /* host id 0 */
  CameraRecord* rec = &sys->tCam[sys->aiCamIndex[0]];

  PlaneInfo plane = {0};
  plane.iWidth = rec->iWidthMax;
  plane.iHeight = rec->iHeightMax;
  plane.iPitch = rec->iWidthMax;
  plane.pBits = malloc((size_t)plane.iPitch * (size_t)plane.iHeight);

  CamImage image = {0};
  image.lMagic = TAVRO_IMAGE_MAGIC;
  image.ptCamera = &camera;
  image.ptPlane = &plane;

  ParameterEntry* exposure = &rec->tParam[TAVRO_PARAM_EXPOSURE];
  if (exposure->ySupported) exposure->iCurrent = 5000; /* sent by this acquisition */

  uint32_t status = 0;
  int result =
      plane.pBits != NULL ? acquire(&image, 1 /* wait */, 42 /* user value */, &status, sys) : -1;
  if (result == 0) {
    printf("%d x %d grey image from %s, first pixel %u\n", plane.iWidth, plane.iHeight,
           rec->szCamKey, plane.pBits[0]);
  } else {
    fprintf(stderr, "acquire failed, status 0x%x\n", status);
  }

  tearDown(sys);
  free(plane.pBits);
  free(sys);
  dlclose(lib);
  return result == 0 ? 0 : 1;
}

#include "fake/test_picture.h"

#include <atomic>

namespace oxelarv {

namespace {

// Released after each drawing, acquired by the reader of a finished buffer;
// and released by each hand-over of a buffer or a picture to Aravis's
// threads, acquired before each drawing.
std::atomic<uint64_t> framesDrawn{0};
std::atomic<uint64_t> handedOver{0};

}  // namespace

void TestPicture::SeeDrawnFrames() {
  framesDrawn.load(std::memory_order_acquire);
}

void TestPicture::HandOverBuffer() {
  handedOver.fetch_add(1, std::memory_order_release);
}

uint64_t FrameIdUnwrapper::Next(uint64_t raw) {
  if (raw > 0xFFFF) {
    // A transport with wide IDs (USB3 Vision, GigE Vision 2 extended IDs).
    last_ = raw;
    any_ = true;
    return raw;
  }
  uint64_t id = (last_ & ~uint64_t{0xFFFF}) | raw;
  if (any_ && id + 0x8000 < last_) id += 0x10000;
  last_ = id;
  any_ = true;
  return id;
}

void TestPicture::Install(ArvFakeCamera* camera, Triggers triggers) {
  camera_ = camera;
  triggers_ = triggers;
  if (triggers_ == Triggers::kPictureAnswers) {
    arv_fake_camera_set_trigger_frequency(camera_, kTriggerPollHz);
  }
  handedOver.fetch_add(1, std::memory_order_release);
  arv_fake_camera_set_fill_pattern(camera_, &TestPicture::Fill, this);
}

namespace {

// What a fake camera draws once the picture is removed, while it closes:
// nothing (Aravis's own ramp knows no "BGR8" and complains).
void Blank(ArvBuffer*, void*, guint32, guint32, ArvPixelFormat) {}

}  // namespace

void TestPicture::Remove() {
  // Aravis holds its fill lock while drawing: once this returns, no drawing
  // with this object is under way or to come.
  if (camera_ != nullptr) arv_fake_camera_set_fill_pattern(camera_, &Blank, nullptr);
  framesDrawn.load(std::memory_order_acquire);  // the last drawing is over
  camera_ = nullptr;
}

void TestPicture::Fill(ArvBuffer* buffer, void* self, guint32, guint32, ArvPixelFormat format) {
  auto* picture = static_cast<TestPicture*>(self);
  handedOver.load(std::memory_order_acquire);
  // Every way out publishes what this drawing did (and read).
  struct Published {
    ~Published() { framesDrawn.fetch_add(1, std::memory_order_release); }
  } published;
  guint32 triggerMode = 0;
  arv_fake_camera_read_register(picture->camera_, ARV_FAKE_CAMERA_REGISTER_TRIGGER_MODE,
                                &triggerMode);
  if (picture->triggers_ == Triggers::kPictureAnswers && triggerMode != 0 &&
      !(arv_fake_camera_is_in_software_trigger_mode(picture->camera_) &&
        arv_fake_camera_check_and_acknowledge_software_trigger(picture->camera_))) {
    arv_buffer_set_frame_id(buffer, kUntriggered);
    return;
  }
  oxelc::FrameGeometry geometry;
  geometry.width = static_cast<uint32_t>(arv_buffer_get_image_width(buffer));
  geometry.height = static_cast<uint32_t>(arv_buffer_get_image_height(buffer));
  geometry.offsetX = static_cast<uint32_t>(arv_buffer_get_image_x(buffer));
  geometry.offsetY = static_cast<uint32_t>(arv_buffer_get_image_y(buffer));
  geometry.bytesPerPixel = format == ARV_PIXEL_FORMAT_BGR_8_PACKED ? 3 : 1;
  // The fake camera has checked that the buffer holds the whole payload;
  // the size it reports is what was received so far, 0 here.
  size_t received = 0;
  auto* data = static_cast<uint8_t*>(const_cast<void*>(arv_buffer_get_data(buffer, &received)));
  const size_t frameBytes = size_t{geometry.width} * geometry.height * geometry.bytesPerPixel;
  std::lock_guard lock(picture->mutex_);
  const uint64_t id = picture->ids_.Next(arv_buffer_get_frame_id(buffer));
  // The stream reads the widened ID: it skips the IDs of untriggered frames.
  arv_buffer_set_frame_id(buffer, id);
  picture->pattern_.Fill(geometry, id, data, frameBytes);
}

}  // namespace oxelarv

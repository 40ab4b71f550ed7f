// PCM WAVE writer: a placeholder header, the samples, then the real header.
#include "tovfoundation/streams.h"
#include "tovfoundation/writers.h"

namespace TOV {

namespace {
constexpr std::uint32_t kNotWriting = 0xFFFFFFFFu;
constexpr std::uint32_t kHeaderBytes = 44;
constexpr std::uint32_t kFormatChunkBytes = 16;
constexpr std::uint16_t kFormatPCM = 1;
constexpr std::uint16_t kFormatIEEEFloat = 3;
}  // namespace

PCMFileWriter::PCMFileWriter()
    : mStream(nullptr), mInfo{}, mHeaderPos(0), mDataBytes(kNotWriting) {}

PCMFileWriter::~PCMFileWriter() {
  if (mDataBytes != kNotWriting && mStream != nullptr) EndWriting();
}

std::uint32_t PCMFileWriter::BeginWriting(Halyard::CWriteStream* stream,
                                          const Halyard::AudioInfo& info) {
  // The byte order is looked at first; a null stream cannot be asked, so it is
  // refused before that, leaving the field null as the other refusals do.
  if (stream == nullptr) {
    mStream = nullptr;
    mInfo = info;
    return kErrInvalidArgument;
  }
  if (stream->FlipBytes()) {
    mStream = nullptr;  // not released: the caller still owns it
    return kErrGeneric;
  }
  mStream = stream;
  mStream->AddRef();
  mInfo = info;

  const std::uint32_t status = mStream->GetPos(&mHeaderPos);
  if (status != 0) return status;
  mDataBytes = 0;
  static constexpr unsigned char kZeros[kHeaderBytes] = {};
  return mStream->Write(kHeaderBytes, kZeros);
}

std::uint32_t PCMFileWriter::WriteSamples(const unsigned char* data, std::uint32_t& count) {
  if (mStream == nullptr) return 0;
  const std::uint32_t status = mStream->Write(count, data);
  if (status != 0) return status;
  mDataBytes += count;  // unsigned: wraps past 4 GiB
  return 0;
}

void PCMFileWriter::WriteHeader() {
  const std::uint32_t channels = Halyard::TOVAudioModeToNumberOfChannels(mInfo.audioMode);
  const std::uint32_t bits = Halyard::TOVAudioSampleSizeToBitsPerSample(mInfo.sampleSize);
  const std::uint16_t tag =
      static_cast<std::uint32_t>(mInfo.sampleSize) == 64 ? kFormatIEEEFloat : kFormatPCM;
  const std::uint32_t byteRate = (bits * channels * mInfo.sampleRate) >> 3;
  const std::uint32_t blockAlign = (bits * channels) / 8;

  // The values go through the stream's signed 16/32-bit typed writes; the
  // casts keep the bit patterns.
  auto putInt = [this](std::uint32_t value) {
    return mStream->PutInt(static_cast<std::int32_t>(value));
  };
  auto putShort = [this](std::uint32_t value) {
    return mStream->PutShort(static_cast<std::int16_t>(static_cast<std::uint16_t>(value)));
  };

  mStream->SetPos(mHeaderPos);  // status ignored: the writes below report nothing either
  if (mStream->Write(4, "RIFF") != 0) return;
  if (putInt(mDataBytes + 36) != 0) return;
  if (mStream->Write(4, "WAVE") != 0) return;
  if (mStream->Write(4, "fmt ") != 0) return;
  if (putInt(kFormatChunkBytes) != 0) return;
  if (putShort(tag) != 0) return;
  if (putShort(channels) != 0) return;
  if (putInt(mInfo.sampleRate) != 0) return;
  if (putInt(byteRate) != 0) return;
  if (putShort(blockAlign) != 0) return;
  if (putShort(bits) != 0) return;
  if (mStream->Write(4, "data") != 0) return;
  putInt(mDataBytes);
}

std::uint32_t PCMFileWriter::EndWriting() {
  if (mStream == nullptr) return 0;
  WriteHeader();
  const std::uint32_t status = mStream->Flush(1);
  if (status != 0) return status;
  mHeaderPos = 0;
  mDataBytes = kNotWriting;
  mStream->Release();  // destroys the stream
  mStream = nullptr;
  return 0;
}

}  // namespace TOV

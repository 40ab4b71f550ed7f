// BMP writer: one uncompressed, top-down bitmap.
#include <cstddef>

#include "tovfoundation/streams.h"
#include "tovfoundation/writers.h"

namespace TOV {

namespace {
constexpr std::uint16_t kBitmapType = 0x4D42;  // "BM"
constexpr std::uint32_t kHeadersBytes = 54;    // file header 14 + information header 40
constexpr std::uint32_t kInfoHeaderBytes = 40;
constexpr std::uint32_t kStreamBufferBytes = 4096;
}  // namespace

BMPFileWriter::BMPFileWriter()
    : mStream(nullptr),
      mSize{0, 0},
      mColourSpace(32),
      mType(0),
      mFileSize(0),
      mReserved1(0),
      mReserved2(0),
      mPixelOffset(0),
      mInfoSize(0),
      mWidth(0),
      mHeight(0),
      mPlanes(0),
      mBitsPerPixel(0),
      mCompression(0),
      mImageSize(0),
      mXResolution(0),
      mYResolution(0),
      mColoursUsed(0),
      mColoursImportant(0) {}

BMPFileWriter::BMPFileWriter(const unsigned short* path) : BMPFileWriter() { OpenNewFile(path); }

BMPFileWriter::~BMPFileWriter() { EndWriting(); }

std::uint32_t BMPFileWriter::OpenNewFile(const unsigned short* path) {
  if (mStream != nullptr) return kErrGeneric;
  Halyard::CFilePort* port = nullptr;
  try {
    port = new Halyard::CFilePort(Halyard::kAccessWrite, 0);
  } catch (...) {
    return kErrGeneric;
  }
  const std::uint32_t status = port->Open(path);
  // On failure the port is deliberately not destroyed (see the header).
  if (status != 0) return status;
  try {
    mStream = new Halyard::CWriteStream(port, Halyard::kHaldLittleEndian, kStreamBufferBytes, 0, 0);
  } catch (...) {
    delete port;  // closes the file it opened
    return kErrGeneric;
  }
  return 0;
}

std::uint32_t BMPFileWriter::ResetStream(Halyard::CWriteStream* stream) {
  if (stream == nullptr) return kErrInvalidPointer;
  if (stream->FlipBytes()) return kErrGeneric;
  if (mStream != nullptr) return kErrGeneric;
  mStream = stream;
  mStream->AddRef();
  return 0;
}

std::uint32_t BMPFileWriter::SetBMPProperties(Halyard::VSize size, std::uint32_t colourSpace) {
  mSize = size;
  mColourSpace = colourSpace;
  mType = kBitmapType;
  mPixelOffset = kHeadersBytes;
  mInfoSize = kInfoHeaderBytes;
  mWidth = size.width;
  mHeight = size.height;
  mPlanes = 1;
  mCompression = 0;
  mBitsPerPixel = static_cast<std::uint16_t>(8 * Halyard::VColourSpacetoNumberofBytes(colourSpace));
  return 0;
}

std::uint32_t BMPFileWriter::WriteBMP(const unsigned char* pixels, std::int32_t rowStride,
                                      std::uint32_t, std::uint32_t&) {
  if (mStream == nullptr || mSize.height == 0 || mSize.width == 0) return kErrGeneric;

  const std::uint32_t width = static_cast<std::uint32_t>(mSize.width);
  const std::uint32_t height = static_cast<std::uint32_t>(mSize.height);
  const std::uint32_t rowBytes = (mBitsPerPixel * width) >> 3;
  // Always 0: rows are written back to back, without 4-byte alignment. Kept as
  // the file format this writer has always produced.
  const std::uint32_t padding = (0u - 4u - rowBytes) & (rowBytes + 3u);

  if (mFileSize == 0) mFileSize = (padding + rowBytes) * height + kHeadersBytes;
  if (mImageSize == 0) mImageSize = mFileSize - kHeadersBytes;

  auto putInt = [this](std::uint32_t value) {
    return mStream->PutInt(static_cast<std::int32_t>(value));
  };
  auto putShort = [this](std::uint16_t value) {
    return mStream->PutShort(static_cast<std::int16_t>(value));
  };

  std::uint32_t status = 0;
  if ((status = putShort(mType)) != 0) return status;
  if ((status = putInt(mFileSize)) != 0) return status;
  if ((status = putShort(mReserved1)) != 0) return status;
  if ((status = putShort(mReserved2)) != 0) return status;
  if ((status = putInt(mPixelOffset)) != 0) return status;

  // Negative height: the rows are stored top-down. Negated in unsigned
  // arithmetic so that every height has a defined result.
  mHeight = static_cast<std::int32_t>(0u - height);
  if ((status = putInt(mInfoSize)) != 0) return status;
  if ((status = putInt(static_cast<std::uint32_t>(mWidth))) != 0) return status;
  if ((status = putInt(static_cast<std::uint32_t>(mHeight))) != 0) return status;
  if ((status = putShort(mPlanes)) != 0) return status;
  if ((status = putShort(mBitsPerPixel)) != 0) return status;
  if ((status = putInt(mCompression)) != 0) return status;
  if ((status = putInt(mImageSize)) != 0) return status;
  if ((status = putInt(static_cast<std::uint32_t>(mXResolution))) != 0) return status;
  if ((status = putInt(static_cast<std::uint32_t>(mYResolution))) != 0) return status;
  if ((status = putInt(mColoursUsed)) != 0) return status;
  if ((status = putInt(mColoursImportant)) != 0) return status;

  static constexpr unsigned char kPadding[4] = {};
  for (std::int32_t row = 0; row < mSize.height; ++row) {
    // Each row's address is formed only for rows that exist, so a negative
    // stride never steps outside the caller's block.
    const unsigned char* source =
        pixels + static_cast<std::ptrdiff_t>(row) * static_cast<std::ptrdiff_t>(rowStride);
    mStream->Write(rowBytes, source);  // row failures are not detected
    if (padding != 0) mStream->Write(padding, kPadding);
  }
  return EndWriting();
}

std::uint32_t BMPFileWriter::EndWriting() {
  if (mStream == nullptr) return 0;
  const std::uint32_t status = mStream->Flush(1);
  mStream->Release();  // destroys the stream, and with it an owned file port
  mStream = nullptr;
  return status;
}

}  // namespace TOV

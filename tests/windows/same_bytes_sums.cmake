# SHA-256 of the files the Linux build's tovtool writes for the cases of
# same_bytes.cmake (build/dev/bin/tovtool, the same options).
set(linux_sha256_tone-default.wav 13999774e92883fb24cd26683f43544f2e4fb6d52ef432611d97b303d760849f)
set(linux_sha256_tone-24bit-5.1.wav 6c22d2575cc2469d3b6e791d293654897deb02df1db612fb83722cc62e34f854)
set(linux_sha256_bars-default.bmp 7ef5c9b1db876c2593b5899639d53ed74881a25c814085e5617bb7715d8bb2e8)
set(linux_sha256_bars-320x180.bmp f0113298517f30f4179e397d3d530175f5ea5c72418e011d3b6154c46e1e7076)
set(linux_sha256_bars-24bit-odd.bmp e3cc5fd573e6739bcb693ce4a295026e33842081cd131326bc0d6aaec939b497)

import os
import sys
from ctypes import CDLL, CFUNCTYPE, POINTER, Structure, byref, c_char_p, c_float, c_int32, c_uint32, c_void_p

class Options(Structure):
    _fields_ = ([(name, c_uint32) for name in ("flags", "surfaceFlags", "hintFlags")] +
                [(name, c_char_p) for name in ("clumpName", "outputFile", "headerFile", "animationFile",
                                               "textureExtension")] +
                [(name, c_float) for name in ("scale", "size", "redWeight", "greenWeight", "blueWeight",
                                              "opacity")])

levels = []
@CFUNCTYPE(None, c_int32, c_char_p)
def on_error(level, text):
    levels.append(level)
    print("error:" if level < 2 else "warning:", os.fsdecode(text), file=sys.stderr)

mcl = CDLL("MCL3DS20.dll" if os.name == "nt" else "libMCL3DS20.so.3")
mcl.Mc3dsLoadFile.restype = c_void_p
mcl.Mc3dsOutput.argtypes = [c_void_p, POINTER(Options), c_void_p]
mcl.Mc3dsUnloadFile.argtypes = [c_void_p]
mcl.Mc3dsSetErrorCallback(on_error)
scene = mcl.Mc3dsLoadFile(os.fsencode(sys.argv[1]))
if scene:
    options = Options(surfaceFlags=1, outputFile=os.fsencode(sys.argv[2]), scale=1.0, redWeight=0.299,
                      greenWeight=0.587, blueWeight=0.114)
    mcl.Mc3dsOutput(scene, byref(options), None)
    mcl.Mc3dsUnloadFile(scene)
sys.exit(not scene or min(levels, default=2) < 2)

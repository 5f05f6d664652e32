[profile]
version = 1
name = "x"
[global]
0x7001 = short:-32768
0x7002 = long:2147483647
0x7003 = i8:-9223372036854775808
0x7004 = currency:123456
0x7005 = float:0.1
0x7006 = double:1e+300
0x7007 = apptime:45000.25
0x7008 = systime:0x7FFFFFFFFFFFFFFF
0x7009 = boolean:false
0x700A = unicode:"\uD83D\u2028\n\t"
0x700B = string8:"a\tb\xFF"
0x700C = binary:
0x700D = clsid:00112233445566778899AABBCCDDEEFF
0x700E = short[]:1, -1
0x700F = long[]:
0x7010 = float[]:1.5, nan
0x7011 = double[]:-0, inf, 5e-324
0x7012 = currency[]:1
0x7013 = apptime[]:0.5
0x7014 = systime[]:1, 4294967296
0x7015 = i8[]:1, 2
0x7016 = unicode[]:"a, \"b\"", "", "c\\"
0x7017 = string8[]:"x", "y"
0x7018 = binary[]:01, , 0203
0x7019 = clsid[]:00112233445566778899AABBCCDDEEFF, FFEEDDCCBBAA99887766554433221100
[end]

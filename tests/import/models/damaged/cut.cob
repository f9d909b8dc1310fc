Caligari V00.01ALH
Grou V0.01 Id 1 Parent 0 Size 99
Name
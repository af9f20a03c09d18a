[playlist]
File10=j.mp3
Title2=A - B
File2=file:///b.mp3
Length2=-1
NumberOfEntries=2
